#include <gtest/gtest.h>

#include <platform/ZTVersion.h>

#include <string>

namespace {

TEST(VersionTest, LinkedLibraryIsTheVersionTheBuildDeclares) {
  EXPECT_EQ(std::string(zt::versionString()), ZT_PROJECT_VERSION);
}

}  // namespace
