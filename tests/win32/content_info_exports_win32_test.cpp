// The content-text exports of the built DLL, as a host calls them: arguments, buffers with
// guard characters after them, folders, and the host's drive C: against the system's answers.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kq {
namespace {

// A host's buffer of `chars` characters with guard characters after it.
struct GuardedBuffer {
    explicit GuardedBuffer(std::size_t size_in_chars) : chars(size_in_chars), slots(size_in_chars + 4, L'#') {}
    wchar_t* data() { return slots.data(); }
    uint32_t size() const { return static_cast<uint32_t>(chars); }
    std::wstring text() const { return std::wstring(slots.begin(), std::find(slots.begin(), slots.end(), L'\0')); }
    bool guards_intact() const {
        return std::all_of(slots.begin() + chars, slots.end(), [](wchar_t c) { return c == L'#'; });
    }

    std::size_t chars;
    std::vector<wchar_t> slots;
};

std::wstring label_of_c() {
    wchar_t label[MAX_PATH + 1] = {};
    GetVolumeInformationW(L"C:\\", label, MAX_PATH + 1, nullptr, nullptr, nullptr, nullptr, 0);
    return label;
}

class ContentInfoDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        info_ = resolve<decltype(KQGetContentInfo)>("KQGetContentInfo");
        tooltip_ = resolve<decltype(KQGetContentTooltip)>("KQGetContentTooltip");
        ASSERT_TRUE(info_ && tooltip_);
    }

    decltype(KQGetContentInfo)* info_ = nullptr;
    decltype(KQGetContentTooltip)* tooltip_ = nullptr;
    // A disk that only its record describes: no file is needed.
    const std::wstring list_ = L"Work\tC:\\nowhere\\work.hdf";
    const std::wstring records_ = L"C:\\nowhere\\work.hdf\tDH0\tWork\thardfile";
};

TEST_F(ContentInfoDll, SummariesInTheHostsBuffer) {
    GuardedBuffer refused(8);
    EXPECT_EQ(info_(1, 0, list_.c_str(), records_.c_str(), nullptr, 8, 0), KQ_E_INVALIDARG);
    EXPECT_EQ(info_(1, 0, list_.c_str(), records_.c_str(), refused.data(), 0, 0), KQ_E_INVALIDARG);
    for (const uint8_t type : {0, 2, 3, 255})
        EXPECT_EQ(info_(type, 0, list_.c_str(), records_.c_str(), refused.data(), refused.size(), 0), KQ_E_INVALIDARG);
    EXPECT_EQ(refused.slots[0], L'#') << "refused calls leave the buffer alone";

    const std::wstring expected = L"Work\tHard Disk \"Work\"";
    GuardedBuffer fits(expected.size() + 1), short_by_one(expected.size()), short_form(64), none(1);
    EXPECT_EQ(info_(1, 7, list_.c_str(), records_.c_str(), fits.data(), fits.size(), 0), KQ_S_OK);
    EXPECT_EQ(fits.text(), expected);
    EXPECT_EQ(info_(1, 0, list_.c_str(), records_.c_str(), short_by_one.data(), short_by_one.size(), 0),
              KQ_STATUS_FROM_WIN32(111));
    EXPECT_EQ(short_by_one.text(), L"");
    EXPECT_TRUE(fits.guards_intact() && short_by_one.guards_intact());
    EXPECT_EQ(info_(1, 0, list_.c_str(), records_.c_str(), short_form.data(), short_form.size(), 2), KQ_S_OK);
    EXPECT_EQ(short_form.text(), L"\"Work\" (DH0, hardfile)");
    EXPECT_EQ(info_(1, 0, nullptr, nullptr, none.data(), none.size(), 0), KQ_S_OK);
    EXPECT_EQ(none.slots[0], L'\0');

    test::TempFolder folder;
    folder.create_folder(u"Games");
    const std::u16string games16 = folder.path(u"Games");
    const std::wstring games(games16.begin(), games16.end());
    GuardedBuffer running(1024), drive(1024);
    ASSERT_EQ(info_(1, 0, nullptr, games.c_str(), running.data(), running.size(), 1), KQ_S_OK);
    EXPECT_EQ(running.text(), games + L"\t\tGames\tmounted directory");
    ASSERT_EQ(info_(1, 0, L"System\tC:\\", nullptr, drive.data(), drive.size(), 2), KQ_S_OK);
    const std::wstring label = label_of_c();
    const bool is_removable = GetDriveTypeW(L"C:\\") == DRIVE_REMOVABLE;
    EXPECT_EQ(drive.text(), L"\"" + (label.empty() ? L"C:\\" : label) + (is_removable ? L"\" (" : L"\" (DH0, ") +
                                (label.empty() ? L"mounted directory)" : L"mounted drive)"));
}

TEST_F(ContentInfoDll, TooltipsInTheHostsBuffer) {
    GuardedBuffer refused(8), cut(10), unknown(8);
    EXPECT_EQ(tooltip_(0, 0, nullptr, nullptr, nullptr, 8), KQ_E_INVALIDARG);
    EXPECT_EQ(tooltip_(0, 0, nullptr, nullptr, refused.data(), 0), KQ_E_INVALIDARG);
    EXPECT_EQ(refused.slots[0], L'#');
    EXPECT_EQ(tooltip_(0, 0, L"", L"Disk", cut.data(), cut.size()), KQ_S_OK);
    EXPECT_EQ(cut.text(), L"Floppy di");
    EXPECT_EQ(tooltip_(7, 0, L"C:\\", L"Disk", unknown.data(), unknown.size()), KQ_S_OK);
    EXPECT_EQ(unknown.text(), L"");
    EXPECT_TRUE(cut.guards_intact() && unknown.guards_intact());

    const std::wstring label = label_of_c();
    const struct {
        uint8_t type;
        uint32_t index;
        const wchar_t *path, *label;
        std::wstring expected;
    } rows[] = {
        {0, 0, nullptr, nullptr, L"Floppy disk drive DF0:\r\nEmpty"},
        {0, 2, L"C:\\nowhere\\disk.adf", L"Disk 2", L"Floppy disk drive DF2:\r\nDisk 2"},
        {1, 0, list_.c_str(), records_.c_str(), L"Hard disk drive:\r\n\"Work\" (DH0, hardfile)"},
        {2, 0, L"C:", L"Disc", L"CD drive:\r\n" + (label.empty() ? L"Disc" : L"\"" + label + L"\" (Disc)")},
        {3, 0, L"\\\\server\\share", L"Share", L"Network"},
    };
    for (const auto& row : rows) {
        GuardedBuffer buffer(256);
        EXPECT_EQ(tooltip_(row.type, row.index, row.path, row.label, buffer.data(), buffer.size()), KQ_S_OK);
        EXPECT_EQ(buffer.text(), row.expected) << int{row.type};
    }
}

} // namespace
} // namespace kq
