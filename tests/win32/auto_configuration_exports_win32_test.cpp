// KQAutoConfigureApplication of the built DLL, as a host calls it: a catalog of loose media and
// an emulator configuration file, the output pointer and the heap of the text it receives.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/amiga_images.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <cstring>
#include <string>

namespace kq {
namespace {

std::wstring wide(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

class AutoConfigurationDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        configure_ = resolve<decltype(KQAutoConfigureApplication)>("KQAutoConfigureApplication");
        ASSERT_NE(configure_, nullptr);
    }

    // The status, and the text handed back (freed with GlobalFree, as the host must).
    struct Result {
        kq_status status;
        std::string text;
        bool has_text;
    };
    Result call(const std::wstring& input, uint32_t flags) const {
        char* xml = reinterpret_cast<char*>(1);
        Result result{configure_(input.c_str(), nullptr, flags, &xml), {}, xml != nullptr};
        if (xml != nullptr) {
            result.text = xml;
            EXPECT_GE(GlobalSize(xml), result.text.size() + 1) << "the text is a global-heap block";
            EXPECT_EQ(GlobalFree(xml), nullptr);
        }
        return result;
    }

    std::wstring catalog(const std::wstring& media) const {
        return L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><xadml><catalog><application><media>" + media +
               L"</media></application></catalog></xadml>";
    }

    decltype(KQAutoConfigureApplication)* configure_ = nullptr;
    test::TempFolder folder_;
};

TEST_F(AutoConfigurationDll, CatalogsOfLooseMedia) {
    folder_.create_file(u"Game.adf", test::as_string(test::floppy_image()));
    const Result game = call(catalog(L"<floppy>" + wide(folder_.path(u"Game.adf")) + L"</floppy>"), 0);
    ASSERT_EQ(game.status, KQ_S_OK);
    ASSERT_TRUE(game.has_text);
    EXPECT_EQ(game.text.rfind("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n", 0), 0u);
    EXPECT_NE(game.text.find("<system>a-1200</system>"), std::string::npos) << game.text;

    const Result none = call(catalog(L"<floppy></floppy>"), 0);
    EXPECT_EQ(none.status, KQ_S_OK);
    EXPECT_FALSE(none.has_text);
    const Result missing = call(catalog(L"<floppy>" + wide(folder_.path(u"missing.adf")) + L"</floppy>"), 0);
    EXPECT_EQ(missing.status, KQ_E_FAIL);
    EXPECT_FALSE(missing.has_text);
    const Result broken = call(L"<xadml>", 0);
    EXPECT_EQ(broken.status, KQ_STATUS_FROM_WIN32(13));
    EXPECT_FALSE(broken.has_text);

    char* xml = reinterpret_cast<char*>(1);
    EXPECT_EQ(configure_(nullptr, nullptr, 0, &xml), KQ_E_POINTER);
    EXPECT_EQ(xml, nullptr) << "the output is cleared first";
    EXPECT_EQ(configure_(L"<xadml/>", nullptr, 0, nullptr), KQ_E_POINTER);
}

TEST_F(AutoConfigurationDll, ImportModeTakesUaeFilesOnly) {
    folder_.create_file(u"Game.UAE", "config_description=Imported\r\nchipset_compatible=A1200\r\n");
    const Result imported = call(wide(folder_.path(u"Game.UAE")), KQ_AUTOCONFIGURE_IMPORT);
    ASSERT_EQ(imported.status, KQ_S_OK);
    ASSERT_TRUE(imported.has_text);
    EXPECT_NE(imported.text.find("<system>a-1200</system>"), std::string::npos) << imported.text;
    EXPECT_NE(imported.text.find(">Imported</text>"), std::string::npos) << imported.text;

    folder_.create_file(u"Game.cfg", "chipset_compatible=A1200\r\n");
    folder_.create_file(u"Game", "chipset_compatible=A1200\r\n");
    for (const char16_t* name : {u"Game.cfg", u"Game", u"Game.uae.cfg"}) {
        const Result refused = call(wide(folder_.path(name)), KQ_AUTOCONFIGURE_IMPORT);
        EXPECT_EQ(refused.status, KQ_E_INVALIDARG)
            << std::string(name, name + std::char_traits<char16_t>::length(name));
        EXPECT_FALSE(refused.has_text);
    }
}

} // namespace
} // namespace kq
