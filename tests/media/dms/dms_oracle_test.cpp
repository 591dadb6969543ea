// The DMS unpacker against xdms, run as a child process: on every sample, and on copies whose
// records are damaged behind right CRCs, what this unpacker accepts xdms unpacks to the same
// image. (xdms writes the records it has one after the other, ours 80 cylinders: the rest of
// ours must be zeros.) xdms is the more lenient, so only acceptance is compared: its run-length
// stage reads on past the first stage's output. Native only.

#include "tests/media/dms/dms_test_support.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>

namespace kq::test::dms {
namespace {

TEST(DmsOracle, WhatIsAcceptedXdmsUnpacksAlike) {
    ASSERT_TRUE(have_tool("xdms")) << "xdms is not installed";
    const TempFolder folder;
    const std::string in = folder.native(u"in.dms").string(), out = folder.native(u"out.adf").string();
    const auto expect_alike = [&](const Bytes& archive, const std::string& what) {
        const Unpacked ours = unpack(archive);
        if (ours.error != media::DmsError::none) return false;
        std::ofstream(in, std::ios::binary)
            .write(reinterpret_cast<const char*>(archive.data()), static_cast<std::streamsize>(archive.size()));
        std::filesystem::remove(out);
        EXPECT_EQ(run_shell("xdms -q u '" + in + "' +'" + out + "'"), 0) << what;
        const std::string theirs = read_file(out);
        EXPECT_TRUE(!theirs.empty() && theirs.size() <= ours.image.size() &&
                    std::equal(theirs.begin(), theirs.end(), ours.image.begin(),
                               [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }) &&
                    std::all_of(ours.image.begin() + static_cast<std::ptrdiff_t>(theirs.size()), ours.image.end(),
                                [](std::uint8_t b) { return b == 0; }))
            << what;
        return true;
    };
    for (const Sample& sample : samples()) EXPECT_TRUE(expect_alike(read_sample(sample.name), sample.name));
    std::mt19937 random(11);
    int accepted = 0;
    for (const char* name :
         {"test_C1_quick.dms", "test_C1_medium.dms", "test_C1_deep.dms", "test_C1_heavy1.dms", "test_C1_ext.dms"}) {
        const Bytes original = read_sample(name);
        const std::vector<std::size_t> at = record_offsets(original);
        for (int round = 0; round < 12; ++round) {
            Bytes archive = original;
            const std::size_t record = at[random() % at.size()];
            // The flags (of which quick, medium and deep read only the first), or the data.
            archive[round % 3 == 0 ? record + 12 : record + 20 + random() % be16(archive, record + 6)] ^=
                static_cast<std::uint8_t>(1u << (random() % (round % 3 == 0 ? 3 : 8)));
            fix_record_crcs(archive, record);
            accepted += expect_alike(archive, std::string(name).append(" record at ").append(std::to_string(record)));
        }
    }
    EXPECT_GT(accepted, 0);
}

} // namespace
} // namespace kq::test::dms
