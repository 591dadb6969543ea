// File associations: what every type's record must hold (texts of its own extension, the
// filter, the icon of its drive, the category of the drive that takes it), the flags, the end
// of the list, and the record handed to the host read back through its layout.

#include "content/auto_configuration.h"
#include "content/file_associations.h"
#include "tests/support/file_association_record.h"

#include <gtest/gtest.h>

#include <set>

namespace kq::content {
namespace {

constexpr std::u16string_view kModulePath = u"C:\\Quennet\\Platforms\\Amiga\\amiga.dll";

// The record of type `index` as the export makes it, read back as a host reads it.
test::FileAssociationView packed(std::uint32_t index, std::u16string_view module_path) {
    const std::optional<FileAssociationTexts> texts = file_association(index, module_path);
    EXPECT_TRUE(texts) << "type " << index;
    const platform::HeapBlock block = texts ? pack_file_association(*texts) : platform::HeapBlock();
    std::string error;
    const auto view =
        block ? test::read_file_association_record(reinterpret_cast<const KQFileAssociation*>(block.data()), error)
              : std::nullopt;
    EXPECT_TRUE(view) << "type " << index << ": " << error;
    return view.value_or(test::FileAssociationView{});
}

TEST(FileAssociations, EveryTypesRecordDescribesItsOwnExtension) {
    std::u16string extensions, flags;
    std::set<std::u16string> long_descriptions;
    for (std::uint32_t index = 0; index < kFileAssociationCount; ++index) {
        const test::FileAssociationView view = packed(index, kModulePath);
        SCOPED_TRACE(view);
        EXPECT_EQ(view, test::english_view(index, kModulePath));
        EXPECT_EQ(packed(index, u""), test::english_view(index, u"")) << "no module path, no icon";
        EXPECT_EQ(packed(index, u"").icon_location, u"");
        const std::u16string& extension = view.extension;
        extensions += extension + u" ";
        flags += static_cast<char16_t>(u'0' + view.flags);
        EXPECT_EQ(view.filter_pattern, u"*." + extension);
        EXPECT_TRUE(view.filter_name.ends_with(u" (*." + extension + u")"));
        const bool is_cd = view.category == 2;
        EXPECT_EQ(view.category, static_cast<std::uint32_t>(media_kind_of(u"x." + extension)));
        if (is_cd) {
            EXPECT_EQ(view.type_name + view.extension_description + view.long_description + view.icon_location, u"");
            continue;
        }
        EXPECT_TRUE(view.extension_description.starts_with(u"." + extension + u" "));
        std::u16string upper = extension;
        for (char16_t& c : upper) c = static_cast<char16_t>(c - u'a' + u'A');
        EXPECT_TRUE(view.long_description.starts_with(upper + u" ")) << "the long description names the format";
        long_descriptions.insert(view.long_description);
        EXPECT_EQ(view.type_name == u"Amiga Hard Disk Image", view.category == 1);
        EXPECT_EQ(view.icon_location, std::u16string(kModulePath) + (view.category == 1 ? u",-163" : u",-144"));
    }
    EXPECT_EQ(extensions, u"adf adz cue dms hdf hdz ipf iso scp uae ");
    EXPECT_EQ(flags, u"3303330037") << "writable images 3, read-only ones 0, configuration files 7";
    EXPECT_EQ(long_descriptions.size(), 8u);
    const test::FileAssociationView uae = packed(9, kModulePath);
    EXPECT_EQ(uae.type_name + u"|" + uae.extension_description + u"|" + uae.filter_name,
              u"UAE Configuration File|.uae UAE Configuration File|WinUAE Configuration Files (*.uae)");
    EXPECT_EQ(packed(6, kModulePath).extension_description, u".ipf SPS Interchangeable Preservation Format");
    for (const std::uint32_t index : {10u, 0xFFFFFFFFu}) EXPECT_FALSE(file_association(index, kModulePath)) << index;
}

} // namespace
} // namespace kq::content
