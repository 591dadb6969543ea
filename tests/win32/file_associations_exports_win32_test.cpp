// The file-association exports of the built DLL, as a host calls them: every record from the
// local heap, the end of the list, the arguments, and the icons that the records name.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/file_association_record.h"

#include <windows.h>
#include <shellapi.h>

#include <cstring>
#include <cwchar>
#include <set>
#include <string>

namespace kq {
namespace {

std::u16string u16(std::wstring_view text) { return std::u16string(text.begin(), text.end()); }

// The width of an icon's colour image; 0 for no icon.
LONG icon_width(HICON icon) {
    ICONINFO info{};
    if (icon == nullptr || !GetIconInfo(icon, &info)) return 0;
    BITMAP bitmap{};
    GetObjectW(info.hbmColor, sizeof bitmap, &bitmap);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return bitmap.bmWidth;
}

class FileAssociationsDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        get_ = resolve<decltype(KQGetFileAssociation)>("KQGetFileAssociation");
        free_ = resolve<decltype(KQFreeFileAssociation)>("KQFreeFileAssociation");
        ASSERT_TRUE(get_ && free_);
    }

    std::wstring dll_path() const {
        wchar_t path[MAX_PATH];
        const DWORD length = GetModuleFileNameW(module_, path, MAX_PATH);
        return std::wstring(path, length);
    }

    // The record of type `index`, read back and freed.
    std::optional<test::FileAssociationView> record(std::uint32_t index) const {
        KQFileAssociation* association = nullptr;
        EXPECT_EQ(get_(index, &association), KQ_S_OK) << "type " << index;
        std::string error;
        auto view = test::read_file_association_record(association, error);
        EXPECT_TRUE(view) << "type " << index << ": " << error;
        if (view) {
            EXPECT_EQ(LocalSize(association), view->formula_bytes) << "type " << index;
        }
        EXPECT_EQ(free_(association), KQ_S_OK);
        return view;
    }

    decltype(KQGetFileAssociation)* get_ = nullptr;
    decltype(KQFreeFileAssociation)* free_ = nullptr;
};

TEST_F(FileAssociationsDll, TenRecordsInLocalBlocksThenTheEnd) {
    const std::u16string module_path = u16(dll_path());
    for (std::uint32_t index = 0; index < KQ_FILE_ASSOCIATION_COUNT; ++index)
        EXPECT_EQ(record(index), test::english_view(test::kEnglishFileAssociations[index], module_path))
            << "type " << index;
    for (const std::uint32_t index : {10u, 0xFFFFFFFFu}) {
        KQFileAssociation* association = reinterpret_cast<KQFileAssociation*>(1);
        EXPECT_EQ(get_(index, &association), KQ_S_FALSE) << index;
        EXPECT_EQ(association, nullptr);
    }
}

TEST_F(FileAssociationsDll, TwoCallsGiveEqualSeparateRecords) {
    KQFileAssociation *first = nullptr, *second = nullptr;
    ASSERT_EQ(get_(4, &first), KQ_S_OK);
    ASSERT_EQ(get_(4, &second), KQ_S_OK);
    EXPECT_NE(first, second);
    ASSERT_EQ(LocalSize(first), LocalSize(second));
    // The same strings after each header.
    EXPECT_EQ(std::memcmp(first->extension, second->extension, LocalSize(first) - sizeof(KQFileAssociation)), 0);
    EXPECT_EQ(free_(first), KQ_S_OK);
    EXPECT_EQ(free_(second), KQ_S_OK);
}

TEST_F(FileAssociationsDll, NullPointers) {
    EXPECT_EQ(get_(0, nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(get_(10, nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(free_(nullptr), KQ_S_OK);
}

// Each icon location, read as the desktop reads it ("<file>,-<resource id>"), names an icon
// resource of the DLL from which the shell extracts a large and a small icon.
TEST_F(FileAssociationsDll, IconLocationsNameTheDllsIcons) {
    std::set<int> ids;
    for (std::uint32_t index = 0; index < KQ_FILE_ASSOCIATION_COUNT; ++index) {
        KQFileAssociation* association = nullptr;
        ASSERT_EQ(get_(index, &association), KQ_S_OK);
        const std::wstring location(association->iconLocation);
        free_(association);
        if (location.empty()) continue;
        const std::size_t comma = location.rfind(L',');
        ASSERT_NE(comma, std::wstring::npos) << index;
        const std::wstring file = location.substr(0, comma);
        const int icon_index = std::wcstol(location.c_str() + comma + 1, nullptr, 10);
        EXPECT_EQ(file, dll_path());
        ASSERT_LT(icon_index, 0) << "a resource id, not a position";
        ids.insert(-icon_index);

        HICON large = nullptr, small = nullptr;
        EXPECT_GT(ExtractIconExW(file.c_str(), icon_index, &large, &small, 1), 0u) << index;
        EXPECT_EQ(icon_width(large), 32) << index;
        EXPECT_EQ(icon_width(small), 16) << index;
        for (const HICON icon : {large, small})
            if (icon != nullptr) DestroyIcon(icon);
    }
    EXPECT_EQ(ids, (std::set<int>{144, 163}));
}

} // namespace
} // namespace kq
