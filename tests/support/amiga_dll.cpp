#include "tests/support/amiga_dll.h"

namespace kq::test {

std::wstring folder_of_this_program() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring full(path, length);
    return full.substr(0, full.rfind(L'\\'));
}

void AmigaDllTest::SetUp() {
    module_ = LoadLibraryW((folder_of_this_program() + L"\\amiga.dll").c_str());
    ASSERT_NE(module_, nullptr) << "error " << GetLastError();
}

void AmigaDllTest::TearDown() {
    if (module_ != nullptr) FreeLibrary(module_);
    module_ = nullptr;
}

} // namespace kq::test
