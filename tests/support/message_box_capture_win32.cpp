// A thread-local CBT hook sees each message box as it is activated, reads its caption and its
// text (the static control with id 0xFFFF) and presses OK.

#include "tests/support/message_box_capture.h"

#include <windows.h>

#include <utility>

namespace kq::test {
namespace {

thread_local HHOOK t_hook = nullptr;
thread_local std::vector<CapturedMessageBox> t_boxes;

std::u16string window_text(HWND window) {
    wchar_t text[2048];
    const int length = GetWindowTextW(window, text, 2048);
    return std::u16string(reinterpret_cast<const char16_t*>(text), length > 0 ? length : 0);
}

LRESULT CALLBACK on_cbt(int code, WPARAM wparam, LPARAM lparam) {
    if (code == HCBT_ACTIVATE) {
        HWND window = reinterpret_cast<HWND>(wparam);
        wchar_t class_name[16] = {};
        GetClassNameW(window, class_name, 16);
        if (std::wstring_view(class_name) == L"#32770") {
            HWND text = GetDlgItem(window, 0xFFFF);
            t_boxes.push_back({text ? window_text(text) : std::u16string(), window_text(window)});
            PostMessageW(window, WM_COMMAND, IDOK, 0);
        }
    }
    return CallNextHookEx(t_hook, code, wparam, lparam);
}

} // namespace

MessageBoxCapture::MessageBoxCapture() { t_hook = SetWindowsHookExW(WH_CBT, on_cbt, nullptr, GetCurrentThreadId()); }

MessageBoxCapture::~MessageBoxCapture() {
    UnhookWindowsHookEx(t_hook);
    t_hook = nullptr;
    t_boxes.clear();
}

std::vector<CapturedMessageBox> MessageBoxCapture::take() { return std::exchange(t_boxes, {}); }

} // namespace kq::test
