#include "tests/support/message_box_capture.h"

#include "platform/native/native_controls.h"

namespace kq::test {

MessageBoxCapture::MessageBoxCapture() { platform::native::take_shown_message_boxes(); }

MessageBoxCapture::~MessageBoxCapture() = default;

std::vector<CapturedMessageBox> MessageBoxCapture::take() {
    std::vector<CapturedMessageBox> boxes;
    for (auto& shown : platform::native::take_shown_message_boxes())
        boxes.push_back({std::move(shown.text), std::move(shown.caption)});
    return boxes;
}

} // namespace kq::test
