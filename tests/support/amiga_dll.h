#pragma once
// Tests of the built amiga.dll under Wine: the DLL beside the test program, loaded as a host
// loads it, and its exports resolved by name.

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace kq::test {

inline std::wstring folder_of_this_program() {
    wchar_t path[MAX_PATH];
    const std::wstring full(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    return full.substr(0, full.rfind(L'\\'));
}

class AmigaDllTest : public testing::Test {
protected:
    void SetUp() override {
        module_ = LoadLibraryW((folder_of_this_program() + L"\\amiga.dll").c_str());
        ASSERT_NE(module_, nullptr) << "error " << GetLastError();
    }
    void TearDown() override {
        if (module_ != nullptr) FreeLibrary(module_);
    }

    template <class Function>
    Function* resolve(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module_, name)));
    }

    HMODULE module_ = nullptr;
};

} // namespace kq::test
