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

#include "common/utf.h"
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
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <set>

namespace kq::media {
namespace {

namespace fs = std::filesystem;

constexpr rlim_t kLimitBytes = 16384;      // what a write may still add: the disk is nearly full
constexpr std::size_t kImageBytes = 98304; // 96 KB, well past the limit
constexpr HResult kDiskFull = status::from_win32(112);
constexpr HResult kAccessDenied = status::from_win32(platform::system_error::access_denied);
constexpr HResult kWriteProtected = status::from_win32(19);
constexpr HResult kInvalidData = status::from_win32(platform::system_error::invalid_data);
constexpr std::uint32_t kWriteBackChanged = kRuntimeMediumWriteBack | kRuntimeMediumAssumeChanged;

// Bytes that do not compress, so that a compressed image is as large as a plain one.
std::string noise(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random() & 0xFF);
    return bytes;
}

std::string as_text(const test::Bytes& bytes) {
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}
std::string gzip_of(const std::string& data) { return as_text(test::gzip_member(test::bytes_of(data))); }

std::string inflated(const std::string& gzip) {
    MemorySource source(std::as_bytes(std::span(gzip)));
    MemorySink sink;
    return inflate(source, sink) == InflateError::none ? as_text(sink.bytes()) : std::string("(not a gzip file)");
}

// Compares file contents without printing them (they are binary and large).
testing::AssertionResult same_bytes(const std::string& actual, const std::string& expected) {
    if (actual == expected) return testing::AssertionSuccess();
    const auto differ = std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
    return testing::AssertionFailure() << actual.size() << " bytes where " << expected.size()
                                       << " were expected, first difference at " << (differ.first - actual.begin());
}

bool is_compressed(std::u16string_view name) { return name.ends_with(u".adz") || name.ends_with(u".hdz"); }

// The names in a folder, files and folders alike.
std::set<std::string> names_in(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

std::string listing(const fs::path& folder) {
    std::string text;
    for (const std::string& name : names_in(folder)) text += name + " ";
    return text;
}

// While it lives, no file of this process can grow past `bytes`.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        previous_handler_ = std::signal(SIGXFSZ, SIG_IGN);
        if (getrlimit(RLIMIT_FSIZE, &previous_) != 0) return;
        rlimit limited = previous_;
        limited.rlim_cur = std::min(bytes, previous_.rlim_max);
        active_ = setrlimit(RLIMIT_FSIZE, &limited) == 0;
    }
    ~FileSizeLimit() {
        if (active_) setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previous_handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    bool active() const { return active_; }

private:
    rlimit previous_{};
    void (*previous_handler_)(int) = SIG_DFL;
    bool active_ = false;
};

bool write_text(const char* path, const std::string& text) {
    const int fd = open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(fd);
    return written;
}

// In a child process: makes `folder` read-only for this process. Empty, or why it could not.
std::string make_read_only(const fs::path& folder) {
    const uid_t uid = getuid();
    const gid_t gid = getgid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
        if (!write_text("/proc/self/setgroups", "deny") ||
            !write_text("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1") ||
            !write_text("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1"))
            return std::string("user namespace without an id map: ") + std::strerror(errno);
        const char* path = folder.c_str();
        if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount(path, path, nullptr, MS_BIND, nullptr) != 0 ||
            mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0)
            return std::string("no read-only bind mount: ") + std::strerror(errno);
    } else if (geteuid() != 0) {
        if (chmod(folder.c_str(), 0555) != 0) return std::string("chmod: ") + std::strerror(errno);
    } else {
        return "root without user namespaces: nothing makes a folder read-only";
    }
    const fs::path probe = folder / ".write-probe";
    const int fd = open(probe.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return {};
    close(fd);
    unlink(probe.c_str());
    return "the folder stayed writable";
}

// Makes each call in a child process that cannot write into `folder`, and returns their
// statuses in order; nullopt, with the reason in `why`, when no such process can be made here.
// What the calls leave in `folder` is seen by the caller: a bind mount shows the same files.
std::optional<std::vector<HResult>> statuses_with_read_only_folder(const fs::path& folder,
                                                                   const std::vector<std::function<HResult()>>& calls,
                                                                   std::string& why) {
    struct stat before = {};
    int pipe_ends[2];
    if (stat(folder.c_str(), &before) != 0 || pipe2(pipe_ends, O_CLOEXEC) != 0) {
        why = std::strerror(errno);
        return std::nullopt;
    }
    const pid_t child = fork();
    if (child == 0) {
        close(pipe_ends[0]);
        std::string reason = make_read_only(folder);
        const auto length = static_cast<std::uint32_t>(reason.size());
        bool sent = write(pipe_ends[1], &length, sizeof length) == sizeof length &&
                    write(pipe_ends[1], reason.data(), length) == static_cast<ssize_t>(length);
        if (reason.empty())
            for (const auto& call : calls) {
                const HResult result = call();
                sent = sent && write(pipe_ends[1], &result, sizeof result) == sizeof result;
            }
        _exit(sent ? 0 : 1);
    }
    close(pipe_ends[1]);
    std::optional<std::vector<HResult>> results;
    std::uint32_t length = 0;
    if (child > 0 && read(pipe_ends[0], &length, sizeof length) == sizeof length) {
        why.assign(length, '\0');
        if (read(pipe_ends[0], why.data(), length) == static_cast<ssize_t>(length) && why.empty()) {
            results.emplace();
            HResult result = 0;
            while (read(pipe_ends[0], &result, sizeof result) == sizeof result) results->push_back(result);
        }
    } else {
        why = child < 0 ? std::string("fork: ") + std::strerror(errno) : "the child process sent nothing";
    }
    close(pipe_ends[0]);
    if (child > 0) waitpid(child, nullptr, 0);
    chmod(folder.c_str(), before.st_mode & 07777);
    return results;
}

class FailingDisk : public ::testing::Test {
protected:
    FailingDisk() {
        platform::native::set_temp_folder(temp_.path() + u"\\");
        // The templates lie beside the module: its path in the module's form, with "\".
        const std::string module = KQ_TEST_MODULE_FOLDER "/amiga.dll";
        std::u16string path(module.begin(), module.end());
        std::replace(path.begin(), path.end(), u'/', u'\\');
        platform::native::set_module_file_path(path);
    }
    ~FailingDisk() override {
        platform::native::set_temp_folder(u"");
        platform::native::set_module_file_path(u"");
    }

    static std::u16string record_of(std::u16string_view copy) {
        const std::size_t name = copy.rfind(u'\\') + 1;
        return std::u16string(copy.substr(0, name + kRuntimeKeyChars)) + u".info";
    }
    static bool exists(std::u16string_view path) { return fs::exists(test::to_fs_path(path)); }

    // A working copy of images_\<name> (holding `image`) that the emulator changed to `changed`.
    std::u16string changed_copy(std::u16string_view name, const std::string& image, const std::string& changed) {
        images_.create_file(name, is_compressed(name) ? gzip_of(image) : image);
        const std::u16string path = images_.path(name);
        RuntimeMediumRequest request;
        request.image_path = path;
        std::u16string copy;
        EXPECT_EQ(make_runtime_medium(request, copy), status::ok) << test::printable(name);
        std::ofstream(test::to_fs_path(copy), std::ios::binary) << changed;
        return copy;
    }

    // What the user's image holds, inflated when it is compressed.
    std::string image_content(std::u16string_view name) const {
        const std::string stored = test::read_file(images_.native(name));
        return is_compressed(name) ? inflated(stored) : stored;
    }

    test::TempFolder temp_, images_, source_, target_;
};

const std::u16string_view kImageNames[] = {u"Game.adf", u"Game.adz", u"Work.hdf", u"Work.hdz"};

TEST_F(FailingDisk, WriteBackOnAFullDiskKeepsImageCopyAndRecordForAnotherTry) {
    unsigned seed = 1;
    for (const std::u16string_view name : kImageNames) {
        SCOPED_TRACE(test::printable(name));
        const std::string original = noise(kImageBytes, seed++), changed = noise(kImageBytes, seed++);
        const std::u16string copy = changed_copy(name, original, changed);
        ASSERT_FALSE(copy.empty());
        const std::string stored = test::read_file(images_.native(name));

        HResult result = status::ok;
        {
            const FileSizeLimit full(kLimitBytes);
            ASSERT_TRUE(full.active());
            result = dismiss_runtime_medium(copy, kWriteBackChanged);
        }
        EXPECT_EQ(result, kDiskFull) << std::hex << result;
        EXPECT_TRUE(same_bytes(test::read_file(images_.native(name)), stored)) << "the image is untouched";
        EXPECT_TRUE(same_bytes(test::read_file(test::to_fs_path(copy)), changed)) << "the copy stays";
        EXPECT_TRUE(exists(record_of(copy))) << "its record stays";
        EXPECT_EQ(names_in(images_.native(u"")).size(), 1u)
            << "no side file beside the image: " << listing(images_.native(u""));

        // With room again, the same call writes back and cleans up.
        EXPECT_EQ(dismiss_runtime_medium(copy, kWriteBackChanged), status::ok);
        EXPECT_TRUE(same_bytes(image_content(name), changed));
        EXPECT_FALSE(exists(copy));
        EXPECT_FALSE(exists(record_of(copy)));
        EXPECT_EQ(names_in(images_.native(u"")).size(), 1u);
        fs::remove(images_.native(name));
    }
}

TEST_F(FailingDisk, WriteBackToAReadOnlyImageIsRefused) {
    unsigned seed = 20;
    for (const std::u16string_view name : kImageNames) {
        SCOPED_TRACE(test::printable(name));
        const std::string original = noise(4096, seed++), changed = noise(4096, seed++);
        const std::u16string copy = changed_copy(name, original, changed);
        ASSERT_FALSE(copy.empty());
        const std::u16string image = images_.path(name);
        ASSERT_EQ(platform::set_file_attributes(image, platform::kAttributeReadOnly), 0u);
        const std::string stored = test::read_file(images_.native(name));

        EXPECT_EQ(dismiss_runtime_medium(copy, kWriteBackChanged), kAccessDenied);
        EXPECT_TRUE(same_bytes(test::read_file(images_.native(name)), stored));
        EXPECT_EQ(platform::file_attributes(image).value_or(0) & platform::kAttributeReadOnly,
                  platform::kAttributeReadOnly);
        EXPECT_TRUE(exists(copy));
        EXPECT_TRUE(exists(record_of(copy)));
        EXPECT_EQ(names_in(images_.native(u"")).size(), 1u);
        // Once the image may be written, the same call writes back.
        ASSERT_EQ(platform::set_file_attributes(image, 0), 0u);
        EXPECT_EQ(dismiss_runtime_medium(copy, kWriteBackChanged), status::ok);
        EXPECT_TRUE(same_bytes(image_content(name), changed));
        EXPECT_FALSE(exists(copy));
        fs::remove(images_.native(name));
    }
}

TEST_F(FailingDisk, CopiesOnAFullDiskLeaveNothingBehind) {
    const std::string image = noise(kImageBytes, 40);
    const std::string dms = test::read_file(test::to_fs_path(test::test_data_path(u"dms\\rle_small.dms")));
    ASSERT_FALSE(dms.empty());
    const struct {
        std::u16string_view source;
        std::string content;
        std::uint32_t flags;
        HResult expected; // unpacking failures are reported as invalid data, whatever the cause
    } cases[] = {
        {u"Game.adf", image, 0, kDiskFull},
        {u"Game.adz", gzip_of(image), 0, kDiskFull},
        {u"Game.adz", gzip_of(image), kCopyMediumConvert, kInvalidData},
        {u"Work.hdz", gzip_of(image), kCopyMediumConvert, kInvalidData},
        {u"Game.dms", dms, kCopyMediumConvert, kInvalidData}, // 22,528 bytes unpacked
        {u"Game.adf", image, kCopyMediumUniqueName, kDiskFull},
        // The first data file fits, the second does not: the sheet goes with both.
        {u"Disc.cue", "FILE \"Small.bin\" BINARY\nFILE \"Disc.bin\" BINARY\n", 0, kDiskFull},
    };
    source_.create_file(u"Small.bin", std::string(512, 'S'));
    source_.create_file(u"Disc.bin", image);
    for (const auto& c : cases) {
        SCOPED_TRACE(test::printable(c.source));
        source_.create_file(c.source, c.content);
        std::u16string target = u"unchanged";
        HResult result = status::ok;
        {
            const FileSizeLimit full(kLimitBytes);
            ASSERT_TRUE(full.active());
            result = copy_medium_file(source_.path(c.source), target_.path(), c.flags, target);
        }
        EXPECT_EQ(result, c.expected) << std::hex << result;
        EXPECT_TRUE(target.empty());
        EXPECT_TRUE(names_in(target_.native(u"")).empty()) << "left: " << listing(target_.native(u""));
        EXPECT_TRUE(same_bytes(test::read_file(source_.native(c.source)), c.content)) << "the source is untouched";
    }
    // With room, the same copies succeed (the conditions above were the only obstacle).
    std::u16string target;
    EXPECT_EQ(copy_medium_file(source_.path(u"Disc.cue"), target_.path(), 0, target), status::ok);
    EXPECT_EQ(names_in(target_.native(u"")), (std::set<std::string>{"Disc.cue", "Disc.bin", "Small.bin"}));
}

TEST_F(FailingDisk, BlankMediaOnAFullDiskLeaveNoFolder) {
    for (const std::uint32_t kind : {0u, 1u}) {
        std::u16string path;
        HResult result = status::ok;
        {
            const FileSizeLimit full(kLimitBytes);
            ASSERT_TRUE(full.active());
            result = make_empty_medium(0, kind, &path);
        }
        EXPECT_EQ(result, kDiskFull) << kind;
        EXPECT_TRUE(path.empty());
        EXPECT_TRUE(names_in(temp_.native(u"")).empty()) << "no AEM folder stays";
    }
    std::u16string path;
    ASSERT_EQ(make_empty_medium(0, 0, &path), status::ok);
    free_empty_medium(path);
}

TEST_F(FailingDisk, ReadOnlyFoldersRefuseWriteBackCopiesAndBlankMedia) {
    const std::string original = noise(4096, 50), changed = noise(4096, 51);
    const std::u16string plain = changed_copy(u"Game.adf", original, changed);
    const std::u16string compressed = changed_copy(u"Game.adz", original, changed);
    ASSERT_FALSE(plain.empty() || compressed.empty());
    const std::string stored_plain = test::read_file(images_.native(u"Game.adf"));
    const std::string stored_compressed = test::read_file(images_.native(u"Game.adz"));
    source_.create_file(u"Disk.adf", original);

    // Each folder read-only in turn: the images', the copies' target, the temporary folder.
    const struct {
        const char* what;
        fs::path folder;
        std::function<HResult()> call;
    } cases[] = {
        {"write-back of a plain image", images_.native(u""),
         [&] { return dismiss_runtime_medium(plain, kWriteBackChanged); }},
        {"write-back of a compressed image", images_.native(u""),
         [&] { return dismiss_runtime_medium(compressed, kWriteBackChanged); }},
        {"a copy", target_.native(u""),
         [&] {
             std::u16string target;
             return copy_medium_file(source_.path(u"Disk.adf"), target_.path(), 0, target);
         }},
        {"a blank medium", temp_.native(u""),
         [&] {
             std::u16string path;
             return make_empty_medium(0, 0, &path);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::set<std::string> before = names_in(c.folder);
        std::string why;
        const std::optional<std::vector<HResult>> results = statuses_with_read_only_folder(c.folder, {c.call}, why);
        if (!results) GTEST_SKIP() << "no read-only folder can be made here: " << why;
        ASSERT_EQ(results->size(), 1u);
        // EROFS on a read-only mount, EACCES without write permission.
        EXPECT_TRUE(results->front() == kWriteProtected || results->front() == kAccessDenied)
            << std::hex << results->front();
        EXPECT_EQ(names_in(c.folder), before) << "nothing is made or removed";
    }
    EXPECT_TRUE(same_bytes(test::read_file(images_.native(u"Game.adf")), stored_plain));
    EXPECT_TRUE(same_bytes(test::read_file(images_.native(u"Game.adz")), stored_compressed));
    for (const std::u16string& copy : {plain, compressed}) {
        EXPECT_TRUE(same_bytes(test::read_file(test::to_fs_path(copy)), changed)) << "the copy stays for another try";
        EXPECT_TRUE(exists(record_of(copy)));
        EXPECT_EQ(dismiss_runtime_medium(copy, kWriteBackChanged), status::ok) << "and the try succeeds";
    }
    EXPECT_TRUE(same_bytes(test::read_file(images_.native(u"Game.adf")), changed));
    EXPECT_TRUE(same_bytes(inflated(test::read_file(images_.native(u"Game.adz"))), changed));
}

} // namespace
} // namespace kq::media
