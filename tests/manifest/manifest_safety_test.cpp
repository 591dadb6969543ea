// Manifests come from downloaded packages: hostile documents must fail cleanly or load without
// reaching outside themselves.

#include "manifest/manifest_document.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace kq::manifest {
namespace {

namespace fs = std::filesystem;

// A file that a hostile manifest tries to pull in: a secret, and a DTD fragment that would
// define an entity if it were ever read.
class SecretFile {
public:
    SecretFile() : path_(fs::temp_directory_path() / "kq_manifest_secret.txt") {
        std::ofstream(path_, std::ios::binary) << "SECRET-4711";
        std::ofstream(dtd_path(), std::ios::binary) << "<!ENTITY leak \"SECRET-4711\">";
    }
    ~SecretFile() {
        fs::remove(path_);
        fs::remove(dtd_path());
    }
    fs::path dtd_path() const { return fs::path(path_).replace_extension(".dtd"); }
    static std::string url(const fs::path& path) {
        std::string generic = path.generic_string();
        return (generic.front() == '/' ? "file://" : "file:///") + generic;
    }
    fs::path path_;
};

std::string all_text(const ManifestDocument& document) {
    std::string out;
    document.save(Encoding::utf8, &out);
    return out;
}

TEST(ManifestSafety, NothingOutsideTheDocumentIsRead) {
    const SecretFile secret;
    const std::string file = SecretFile::url(secret.path_), dtd = SecretFile::url(secret.dtd_path());
    const std::string native_path = secret.path_.string();
    const std::string documents[] = {
        "<!DOCTYPE kq9 [<!ENTITY ext SYSTEM \"" + file + "\">]><kq9>&ext;</kq9>",
        "<!DOCTYPE kq9 [<!ENTITY ext SYSTEM \"" + native_path + "\">]><kq9>&ext;</kq9>",
        "<!DOCTYPE kq9 [<!ENTITY ext SYSTEM \"" + file + "\">]><kq9 a=\"x\">&ext;</kq9>",
        "<!DOCTYPE kq9 [<!ENTITY % p SYSTEM \"" + dtd + "\"> %p;]><kq9>&leak;</kq9>",
        "<!DOCTYPE kq9 SYSTEM \"" + dtd + "\"><kq9>&leak;</kq9>",
        "<!DOCTYPE kq9 PUBLIC \"-//x//y\" \"http://127.0.0.1:9/kq9.dtd\"><kq9>text</kq9>",
    };
    for (const std::string& source : documents) {
        ManifestDocument document;
        const HResult loaded = document.load(source.c_str());
        EXPECT_EQ(all_text(document).find("SECRET"), std::string::npos) << source;
        if (loaded != status::ok) {
            EXPECT_TRUE(document.is_empty()) << source;
        }
    }
}

TEST(ManifestSafety, EntityExpansionBombsFailWithAStatus) {
    std::string laughs = "<!DOCTYPE kq9 [<!ENTITY a0 \"ha\">";
    for (int level = 1; level <= 10; ++level) {
        laughs += "<!ENTITY a" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i) laughs += "&a" + std::to_string(level - 1) + ";";
        laughs += "\">";
    }
    laughs += "]><kq9>&a10;</kq9>";
    // One large entity repeated: quadratic growth without any nesting, in text and attributes.
    const std::string big = "<!DOCTYPE kq9 [<!ENTITY big \"" + std::string(50'000, 'x') + "\">]>";
    std::string repeated;
    for (int i = 0; i < 50'000; ++i) repeated += "&big;";
    const std::string bombs[] = {laughs, big + "<kq9>" + repeated + "</kq9>", big + "<kq9 a=\"" + repeated + "\"/>"};
    for (const std::string& bomb : bombs) {
        ManifestDocument document;
        EXPECT_EQ(document.load(bomb.c_str()), kMalformedDocument) << bomb.substr(0, 60);
        EXPECT_TRUE(document.is_empty());
    }
}

TEST(ManifestSafety, BrokenDocumentsFailAndLeaveTheDocumentEmpty) {
    const std::string valid = "<?xml version=\"1.0\"?><kq9><application><system>a-1200</system>"
                              "</application></kq9>";
    ManifestDocument document;
    for (std::size_t length = 0; length < valid.size(); ++length) {
        ASSERT_EQ(document.load(valid.c_str()), status::ok);
        const std::string cut = valid.substr(0, length);
        EXPECT_EQ(document.load(cut.c_str()), kMalformedDocument) << cut;
        EXPECT_TRUE(document.is_empty());
    }
    const char* broken[] = {
        "<kq9>caf\xC3\x28</kq9>", // not UTF-8
        "<kq9>\xFF\xFE</kq9>",    "<kq9><a></b></kq9>",
        "<kq9>&undefined;</kq9>", "<?xml version=\"1.0\" encoding=\"no-such-charset\"?><kq9/>",
        "<kq9/><second/>",
    };
    for (const char* source : broken) {
        ASSERT_EQ(document.load(valid.c_str()), status::ok);
        EXPECT_EQ(document.load(source), kMalformedDocument) << source;
        EXPECT_TRUE(document.is_empty());
    }
    EXPECT_EQ(document.load(nullptr), status::invalid_argument);
    EXPECT_TRUE(document.is_empty());
}

TEST(ManifestSafety, DeclaredEightBitEncodingsAreRead) {
    ManifestDocument document;
    ASSERT_EQ(document.load("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><kq9>caf\xE9</kq9>"), status::ok);
    EXPECT_EQ(element_text(document.find_element_by_path("kq9")), u"caf\u00e9");
}

TEST(ManifestSafety, LoadingAFileHidesEveryFailureBehindFileNotFound) {
    const fs::path folder = fs::temp_directory_path() / "kq_manifest_files";
    fs::create_directories(folder);
    std::ofstream(folder / "ok.kq9", std::ios::binary) << "<kq9><application/></kq9>";
    std::ofstream(folder / "with-zero.kq9", std::ios::binary) << std::string("<kq9/>\0<junk", 12);
    std::ofstream(folder / "bad.kq9", std::ios::binary) << "<kq9>";
    const auto path = [&](const char* name) {
        const std::string text = (folder / name).string();
        return std::u16string(text.begin(), text.end());
    };
    ManifestDocument document;
    EXPECT_EQ(document.load_file(path("ok.kq9")), status::ok);
    EXPECT_NE(document.find_element_by_path("kq9/application"), nullptr);
    EXPECT_EQ(document.load_file(path("with-zero.kq9")), status::ok) << "the text ends at its first NUL";
    EXPECT_EQ(document.load_file(path("bad.kq9")), kMalformedDocument);
    EXPECT_TRUE(document.is_empty());
    EXPECT_EQ(document.load_file(path("missing.kq9")), kManifestFileUnreadable);
    EXPECT_EQ(document.load_file(path("")), kManifestFileUnreadable) << "a folder";
    fs::remove_all(folder);
}

} // namespace
} // namespace kq::manifest
