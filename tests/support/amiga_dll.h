#pragma once
// Tests of the built amiga.dll under Wine: the DLL beside the test program, loaded as a host
// loads it, and its exports resolved by name.

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace kq::test {

std::wstring folder_of_this_program();

class AmigaDllTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    template <class Function>
    Function* resolve(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module_, name)));
    }

    HMODULE module_ = nullptr;
};

} // namespace kq::test
