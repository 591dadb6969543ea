#pragma once
// Collects the message boxes that the code under test shows on the current thread, closing
// each one at once so that the test goes on.

#include <string>
#include <vector>

namespace kq::test {

struct CapturedMessageBox {
    std::u16string text;
    std::u16string caption;
};

class MessageBoxCapture {
public:
    MessageBoxCapture();
    ~MessageBoxCapture();
    MessageBoxCapture(const MessageBoxCapture&) = delete;
    MessageBoxCapture& operator=(const MessageBoxCapture&) = delete;

    // The boxes shown since the capture began or since the last call.
    std::vector<CapturedMessageBox> take();
};

} // namespace kq::test
