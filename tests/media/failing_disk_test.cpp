// Writing back, copying and making blank media on a disk that fails: the user's image is never
// lost or half-written, a failed write-back keeps the working copy and its record for another
// try, copies and blank media leave nothing half-made behind, and the status says why.
//
// A full disk is a file-size limit on this process (RLIMIT_FSIZE, with SIGXFSZ ignored): a
// write past the limit fails with EFBIG, as a write to a nearly full disk fails, and this
// needs no privileges. A read-only image carries the read-only attribute (no write
// permission), which the module honours for root too. A read-only folder is a read-only bind
// mount in a child process with user and mount namespaces of its own, or, where those are not
// allowed, a folder without write permission for a user other than root.

#include "media/compression/inflate.h"
#include "media/copy_medium.h"
#include "media/empty_medium.h"
#include "media/runtime_medium.h"
#include "platform/files.h"
#include "platform/native/native_controls.h"
#include "tests/support/compressed_files.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <set>

namespace kq::media {
namespace {

namespace fs = std::filesystem;

constexpr HResult kDiskFull = status::from_win32(112);
constexpr HResult kAccessDenied = status::from_win32(platform::system_error::access_denied);
constexpr HResult kInvalidData = status::from_win32(platform::system_error::invalid_data);
constexpr std::uint32_t kWriteBackChanged = kRuntimeMediumWriteBack | kRuntimeMediumAssumeChanged;

// Bytes that do not compress, so that a compressed image is as large as a plain one.
std::string noise(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random() & 0xFF);
    return bytes;
}

std::string gzip_of(const std::string& data) {
    const test::Bytes gzip = test::gzip_member(test::bytes_of(data));
    return std::string(reinterpret_cast<const char*>(gzip.data()), gzip.size());
}

bool is_compressed(std::u16string_view name) { return name.ends_with(u".adz") || name.ends_with(u".hdz"); }

// What a file holds, inflated when it is compressed (without printing it when it differs).
std::string content_of(const fs::path& path) {
    const std::string stored = test::read_file(path);
    if (!is_compressed(path.u16string())) return stored;
    MemorySource source(std::as_bytes(std::span(stored)));
    MemorySink sink;
    return inflate(source, sink) == InflateError::none
               ? std::string(reinterpret_cast<const char*>(sink.bytes().data()), sink.bytes().size())
               : "(not a gzip file)";
}
#define EXPECT_SAME(actual, expected) EXPECT_TRUE((actual) == (expected)) << #actual

std::set<std::string> names_in(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

// The status of `call` while no file of this process can grow past 16 KB, well below the 96 KB
// images: the disk is nearly full.
HResult on_a_full_disk(const std::function<HResult()>& call) {
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit previous{};
    getrlimit(RLIMIT_FSIZE, &previous);
    rlimit limited = previous;
    limited.rlim_cur = std::min<rlim_t>(16384, previous.rlim_max);
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const HResult result = call();
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, handler);
    return result;
}

bool write_text(const char* path, const std::string& text) {
    std::ofstream out(path);
    return static_cast<bool>(out << text << std::flush);
}

// The status of `call` in a child process that cannot write into `folder` (EROFS on a read-only
// mount, EACCES without write permission: either is access denied or write protected); nullopt
// when no such process can be made here. A bind mount shows the caller the same files.
std::optional<HResult> with_read_only_folder(const fs::path& folder, const std::function<HResult()>& call) {
    struct stat before = {};
    int pipe_ends[2];
    if (stat(folder.c_str(), &before) != 0 || pipe2(pipe_ends, O_CLOEXEC) != 0) return std::nullopt;
    const uid_t uid = getuid();
    const gid_t gid = getgid();
    const pid_t child = fork();
    if (child == 0) {
        const char* path = folder.c_str();
        const bool read_only = unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0
                                   ? write_text("/proc/self/setgroups", "deny") &&
                                         write_text("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1") &&
                                         write_text("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1") &&
                                         mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                                         mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
                                         mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0
                                   : geteuid() != 0 && chmod(path, 0555) == 0;
        const bool blocked = read_only && access(path, W_OK) != 0;
        const HResult result = blocked ? call() : 0;
        _exit(blocked && write(pipe_ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    close(pipe_ends[1]);
    HResult result = 0;
    const bool got = child > 0 && read(pipe_ends[0], &result, sizeof result) == sizeof result;
    close(pipe_ends[0]);
    if (child > 0) waitpid(child, nullptr, 0);
    chmod(folder.c_str(), before.st_mode & 07777);
    return got ? std::optional(result) : std::nullopt;
}

class FailingDisk : public ::testing::Test {
protected:
    FailingDisk() {
        platform::native::set_temp_folder(temp_.path() + u"\\");
        // The templates lie beside the module: its path in the module's form, with "\".
        std::u16string path(u"" KQ_TEST_MODULE_FOLDER "/amiga.dll");
        std::replace(path.begin(), path.end(), u'/', u'\\');
        platform::native::set_module_file_path(path);
    }
    ~FailingDisk() override {
        platform::native::set_temp_folder(u"");
        platform::native::set_module_file_path(u"");
    }
    static std::u16string record_of(std::u16string_view copy) {
        return std::u16string(copy.substr(0, copy.rfind(u'\\') + 1 + kRuntimeKeyChars)) + u".info";
    }
    static bool exists(std::u16string_view path) { return fs::exists(test::to_fs_path(path)); }

    // A working copy of images_\<name> (holding `image`) that the emulator changed to `changed`.
    std::u16string changed_copy(std::u16string_view name, const std::string& image, const std::string& changed) {
        images_.create_file(name, is_compressed(name) ? gzip_of(image) : image);
        const std::u16string path = images_.path(name);
        std::u16string copy;
        EXPECT_EQ(make_runtime_medium({.image_path = path}, copy), status::ok) << test::printable(name);
        std::ofstream(test::to_fs_path(copy), std::ios::binary) << changed;
        return copy;
    }

    // Writes back with `fail` in the way: the status, then the image, the working copy and its
    // record untouched, and no side file; then, without it, the same call writes back.
    void expect_kept_for_another_try(std::u16string_view name, const std::function<HResult(std::u16string_view)>& fail,
                                     std::initializer_list<HResult> expected, unsigned seed) {
        SCOPED_TRACE(test::printable(name));
        const std::string changed = noise(98304, seed);
        const std::u16string copy = changed_copy(name, noise(98304, seed + 1), changed);
        const std::string stored = test::read_file(images_.native(name));
        const HResult result = fail(copy);
        EXPECT_NE(std::find(expected.begin(), expected.end(), result), expected.end()) << std::hex << result;
        EXPECT_SAME(test::read_file(images_.native(name)), stored);
        EXPECT_SAME(test::read_file(test::to_fs_path(copy)), changed);
        EXPECT_TRUE(exists(record_of(copy)));
        EXPECT_EQ(names_in(images_.native(u"")).size(), 1u) << "no side file beside the image";
        EXPECT_EQ(dismiss_runtime_medium(copy, kWriteBackChanged), status::ok);
        EXPECT_SAME(content_of(images_.native(name)), changed);
        EXPECT_FALSE(exists(copy) || exists(record_of(copy)));
        EXPECT_EQ(names_in(images_.native(u"")).size(), 1u);
        fs::remove(images_.native(name));
    }

    test::TempFolder temp_, images_, source_, target_;
};

const std::u16string_view kImageNames[] = {u"Game.adf", u"Game.adz", u"Work.hdf", u"Work.hdz"};

TEST_F(FailingDisk, AFullDisk) {
    for (const std::u16string_view name : kImageNames)
        expect_kept_for_another_try(
            name,
            [](std::u16string_view copy) {
                return on_a_full_disk([&] { return dismiss_runtime_medium(copy, kWriteBackChanged); });
            },
            {kDiskFull}, 1);
    // Copies leave nothing behind and the source untouched (unpacking failures are reported as
    // invalid data, whatever the cause); the first data file of a sheet fits, the second does
    // not: the sheet goes with both. With room, the same copies succeed.
    const std::string image = noise(98304, 40);
    const std::string dms = test::read_file(test::to_fs_path(test::test_data_path(u"dms\\rle_small.dms")));
    const std::tuple<std::u16string_view, std::string, std::uint32_t, HResult> cases[] = {
        {u"Game.adf", image, 0, kDiskFull},
        {u"Game.adz", gzip_of(image), 0, kDiskFull},
        {u"Game.adz", gzip_of(image), kCopyMediumConvert, kInvalidData},
        {u"Work.hdz", gzip_of(image), kCopyMediumConvert, kInvalidData},
        {u"Game.dms", dms, kCopyMediumConvert, kInvalidData}, // 22,528 bytes unpacked
        {u"Game.adf", image, kCopyMediumUniqueName, kDiskFull},
        {u"Disc.cue", "FILE \"Small.bin\" BINARY\nFILE \"Disc.bin\" BINARY\n", 0, kDiskFull}};
    source_.create_file(u"Small.bin", std::string(512, 'S'));
    source_.create_file(u"Disc.bin", image);
    for (const auto& [source, content, flags, expected] : cases) {
        SCOPED_TRACE(test::printable(source));
        source_.create_file(source, content);
        std::u16string target = u"unchanged";
        EXPECT_EQ(on_a_full_disk([&] { return copy_medium_file(source_.path(source), target_.path(), flags, target); }),
                  expected);
        EXPECT_TRUE(target.empty());
        EXPECT_TRUE(names_in(target_.native(u"")).empty());
        EXPECT_SAME(test::read_file(source_.native(source)), content);
    }
    std::u16string target;
    EXPECT_EQ(copy_medium_file(source_.path(u"Disc.cue"), target_.path(), 0, target), status::ok);
    EXPECT_EQ(names_in(target_.native(u"")), (std::set<std::string>{"Disc.cue", "Disc.bin", "Small.bin"}));
    // Blank media leave no AEM folder.
    for (const std::uint32_t kind : {0u, 1u}) {
        std::u16string path;
        const std::set<std::string> before = names_in(temp_.native(u""));
        EXPECT_EQ(on_a_full_disk([&] { return make_empty_medium(0, kind, &path); }), kDiskFull) << kind;
        EXPECT_TRUE(path.empty());
        EXPECT_EQ(names_in(temp_.native(u"")), before);
    }
}

TEST_F(FailingDisk, AReadOnlyImage) {
    for (const std::u16string_view name : kImageNames)
        expect_kept_for_another_try(
            name,
            [&](std::u16string_view copy) {
                const std::u16string image = images_.path(name);
                EXPECT_EQ(platform::set_file_attributes(image, platform::kAttributeReadOnly), 0u);
                const HResult result = dismiss_runtime_medium(copy, kWriteBackChanged);
                EXPECT_EQ(platform::file_attributes(image).value_or(0) & platform::kAttributeReadOnly,
                          platform::kAttributeReadOnly);
                EXPECT_EQ(platform::set_file_attributes(image, 0), 0u);
                return result;
            },
            {kAccessDenied}, 20);
}

TEST_F(FailingDisk, AReadOnlyFolder) {
    const std::optional<HResult> probe = with_read_only_folder(target_.native(u""), [] { return HResult{0}; });
    if (!probe) GTEST_SKIP() << "no read-only folder can be made here";
    const std::initializer_list<HResult> refused = {status::from_win32(19), kAccessDenied};
    for (const std::u16string_view name : {u"Game.adf", u"Game.adz"})
        expect_kept_for_another_try(
            name,
            [&](std::u16string_view copy) {
                return with_read_only_folder(images_.native(u""),
                                             [&] { return dismiss_runtime_medium(copy, kWriteBackChanged); })
                    .value_or(0);
            },
            refused, 50);
    // Copies and blank media: refused, nothing made.
    source_.create_file(u"Disk.adf", noise(4096, 52));
    const std::pair<fs::path, std::function<HResult()>> calls[] = {
        {target_.native(u""),
         [&] {
             std::u16string target;
             return copy_medium_file(source_.path(u"Disk.adf"), target_.path(), 0, target);
         }},
        {temp_.native(u""), [&] {
             std::u16string path;
             return make_empty_medium(0, 0, &path);
         }}};
    for (const auto& [folder, call] : calls) {
        const std::set<std::string> before = names_in(folder);
        const HResult result = with_read_only_folder(folder, call).value_or(0);
        EXPECT_NE(std::find(refused.begin(), refused.end(), result), refused.end()) << std::hex << result;
        EXPECT_EQ(names_in(folder), before) << folder;
    }
}

} // namespace
} // namespace kq::media
