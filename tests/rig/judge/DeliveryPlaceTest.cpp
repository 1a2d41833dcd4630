#include <gtest/gtest.h>

#include <stdexcept>

#include "rig/judge/delivery/DeliveredFile.h"
#include "rig/judge/delivery/DeliveryPlace.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using rig::judge::DeliveryOptions;
using rig::judge::DeliveryPlace;
using rig::judge::PlaceOf;

struct PathCase {
    const char* pattern;
    const char* event;
    const char* file;
    const char* path;  // null: it leads out of the folder
};

void PrintTo(const PathCase& one, std::ostream* out) {
    *out << one.pattern << " " << one.event << " " << one.file;
}

class DeliveryPlacePaths : public testing::TestWithParam<PathCase> {};

TEST_P(DeliveryPlacePaths, StayInTheFolder) {
    DeliveryPlace place;
    place.pattern = GetParam().pattern;
    const auto path = place.PathOf({GetParam().event, GetParam().file});
    ASSERT_EQ(path.has_value(), GetParam().path != nullptr);
    EXPECT_EQ(path.value_or(""), path ? GetParam().path : "");
}

constexpr const char* kUsual = "{event}/{file}";
INSTANTIATE_TEST_SUITE_P(
    Names, DeliveryPlacePaths,
    testing::Values(PathCase{kUsual, "E1", "a.ts", "E1/a.ts"}, PathCase{kUsual, "E1", "b/a.ts", "E1/b/a.ts"},
                    PathCase{kUsual, "2026/11", "a.ts", "2026/11/a.ts"},
                    PathCase{kUsual, "E1", ".//a.ts", "E1/a.ts"}, PathCase{kUsual, "E1", "..a", "E1/..a"},
                    PathCase{kUsual, "E1", "../a.ts", nullptr}, PathCase{kUsual, "E1", "b/../../a", nullptr},
                    PathCase{kUsual, "E1", "/etc/passwd", nullptr}, PathCase{kUsual, "..", "a.ts", nullptr},
                    PathCase{kUsual, "/", "a.ts", nullptr}, PathCase{kUsual, "", "a.ts", nullptr},
                    PathCase{kUsual, "E1", "", nullptr}, PathCase{kUsual, "E1", "b/", nullptr},
                    PathCase{kUsual, "{file}", "a", "{file}/a"}, PathCase{"{file}", "..", "a", "a"},
                    PathCase{"x/{event}-{file}.mpg", "E1", "a", "x/E1-a.mpg"}));

TEST(DeliveryPlace, IsNoneUnlessAskedFor) {
    EXPECT_FALSE(PlaceOf(DeliveryOptions()).has_value());
}

TEST(DeliveryPlace, RefusesAPatternThatNamesNoFileInTheFolder) {
    const TemporaryFolder folder;
    for (const char* const pattern : {"", "{event}", "{file}{", "/{file}", "../{file}"}) {
        EXPECT_THROW(PlaceOf({folder.Path().string(), "auto", pattern}), std::runtime_error) << pattern;
    }
}

TEST(DeliveryPlace, HasNoHashOfWhatCannotBeRead) {
    const TemporaryFolder folder;
    const auto place = PlaceOf({folder.Path().string(), "auto", "{file}"});
    rig::judge::DeliveredFile file;
    file.path = ".";
    EXPECT_THROW(rig::judge::HashOf(*place, file, rig::HashKind::Sha1), std::runtime_error);
}

TEST(DeliveryPlace, TakesItsOptions) {
    const TemporaryFolder folder;
    const auto place = PlaceOf({folder.Path().string(), "sha1", "{file}"});
    ASSERT_TRUE(place.has_value());
    EXPECT_EQ(place->folder, folder.Path().string());
    EXPECT_EQ(place->hash, rig::HashKind::Sha1);
    EXPECT_EQ(place->pattern, "{file}");
    EXPECT_FALSE(PlaceOf({folder.Path().string(), "auto", "{file}"})->hash.has_value());
}

}  // namespace
