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
#include <optional>
#include <random>

namespace kq::test::dms {
namespace {

class DmsOracle : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(have_tool("xdms")) << "xdms is not installed"; }

    // Whether xdms unpacks the archive to the same image as ours.
    bool xdms_agrees(const Bytes& archive, const Bytes& ours) const {
        const std::string in = folder_.native(u"in.dms").string(), out = folder_.native(u"out.adf").string();
        std::ofstream(in, std::ios::binary)
            .write(reinterpret_cast<const char*>(archive.data()), static_cast<std::streamsize>(archive.size()));
        std::filesystem::remove(out);
        if (run_shell("xdms -q u '" + in + "' +'" + out + "'") != 0) return false;
        const std::string theirs = read_file(out);
        return !theirs.empty() && theirs.size() <= ours.size() &&
               std::equal(theirs.begin(), theirs.end(), ours.begin(),
                          [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }) &&
               std::all_of(ours.begin() + static_cast<std::ptrdiff_t>(theirs.size()), ours.end(),
                           [](std::uint8_t b) { return b == 0; });
    }

    TempFolder folder_;
};

TEST_F(DmsOracle, SamplesUnpackAlike) {
    for (const Sample& sample : samples()) {
        const Bytes archive = read_sample(sample.name);
        const Unpacked ours = unpack(archive);
        ASSERT_EQ(ours.error, media::DmsError::none) << sample.name;
        EXPECT_TRUE(xdms_agrees(archive, ours.image)) << sample.name;
    }
}

TEST_F(DmsOracle, WhatIsAcceptedXdmsUnpacksAlike) {
    std::mt19937 random(11);
    int accepted = 0;
    for (const char* name :
         {"test_C1_quick.dms", "test_C1_medium.dms", "test_C1_deep.dms", "test_C1_heavy1.dms", "test_C1_ext.dms"}) {
        const Bytes original = read_sample(name);
        const std::vector<std::size_t> at = record_offsets(original);
        for (int round = 0; round < 12; ++round) {
            Bytes archive = original;
            const std::size_t record = at[random() % at.size()],
                              packed = archive[record + 6] << 8 | archive[record + 7];
            // The flags (of which quick, medium and deep read only the first), or the data.
            archive[round % 3 == 0 ? record + 12 : record + 20 + random() % packed] ^=
                static_cast<std::uint8_t>(1u << (random() % (round % 3 == 0 ? 3 : 8)));
            fix_record_crcs(archive, record);
            const Unpacked ours = unpack(archive);
            if (ours.error != media::DmsError::none) continue;
            ++accepted;
            EXPECT_TRUE(xdms_agrees(archive, ours.image)) << name << " record at " << record;
        }
    }
    EXPECT_GT(accepted, 0);
}

} // namespace
} // namespace kq::test::dms
