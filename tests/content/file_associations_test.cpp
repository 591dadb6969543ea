// File associations: each type's texts from the string table, its filter, icon, category and
// flags, the end of the list, and the record handed to the host.

#include "content/file_associations.h"
#include "tests/support/file_association_record.h"

#include <gtest/gtest.h>

namespace kq::content {
namespace {

constexpr std::u16string_view kModulePath = u"C:\\Quennet\\Platforms\\Amiga\\amiga.dll";

// The record of type `index` as the export makes it.
platform::HeapBlock packed(std::uint32_t index, std::u16string_view module_path) {
    const std::optional<FileAssociationTexts> texts = file_association(index, module_path);
    EXPECT_TRUE(texts) << "type " << index;
    return texts ? pack_file_association(*texts) : platform::HeapBlock();
}

// The record read back as a host reads it; nullopt (with a failure) when it is missing or
// breaks the layout.
std::optional<test::FileAssociationView> view_of(const platform::HeapBlock& block) {
    EXPECT_TRUE(block);
    if (!block) return std::nullopt;
    std::string error;
    auto view = test::read_file_association_record(reinterpret_cast<const KQFileAssociation*>(block.data()), error);
    EXPECT_TRUE(view) << error;
    return view;
}

TEST(FileAssociations, EachTypeCarriesItsTextsFilterIconCategoryAndFlags) {
    ASSERT_EQ(kFileAssociationCount, test::kEnglishFileAssociations.size());
    for (std::uint32_t index = 0; index < kFileAssociationCount; ++index) {
        const test::FileAssociationView expected =
            test::english_view(test::kEnglishFileAssociations[index], kModulePath);
        EXPECT_EQ(view_of(packed(index, kModulePath)), expected) << "type " << index;
    }
}

TEST(FileAssociations, TheListEndsAfterTheTenthType) {
    for (const std::uint32_t index : {10u, 11u, 0xFFFFFFFFu})
        EXPECT_FALSE(file_association(index, kModulePath)) << index;
}

TEST(FileAssociations, AModuleWithoutAPathGivesNoIconLocation) {
    for (const std::uint32_t index : {0u, 4u, 9u}) {
        const std::optional<test::FileAssociationView> view = view_of(packed(index, u""));
        ASSERT_TRUE(view);
        EXPECT_EQ(view->icon_location, u"") << index;
        EXPECT_EQ(view->filter_name, test::kEnglishFileAssociations[index].filter_name) << index;
    }
}

TEST(FileAssociations, TwoRecordsOfOneTypeAreEqualAndSeparate) {
    const platform::HeapBlock first = packed(8, kModulePath), second = packed(8, kModulePath);
    ASSERT_TRUE(first && second);
    EXPECT_NE(first.data(), second.data());
    EXPECT_EQ(view_of(first), view_of(second));
}

} // namespace
} // namespace kq::content
