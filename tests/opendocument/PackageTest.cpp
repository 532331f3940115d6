// SPDX-License-Identifier: MIT
#include <opendocument/package/Package.h>

#include <opendocument/reading/RawDocument.h>

#include <sys/stat.h>

#include <tests/TestDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;

const std::string kStyles = document("document-styles", paragraphStyle("A"));
const std::string kContent = document("document-content", "", paragraphStyle("P1"));
const std::string kType = "application/vnd.oasis.opendocument.text";

std::string manifest(const std::string& entry) {
  return "<?xml version=\"1.0\"?>\n<!DOCTYPE manifest PUBLIC \"-//X//DTD Manifest 1.0//EN\" \"Manifest.dtd\">"
         "<m:manifest xmlns:m=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">" +
         entry + "</m:manifest>";
}

// Read, or the message of the error.
std::string outcome(const std::string& path, const PackageLimits& limits = {}) {
  try {
    std::string text;
    const Package package = Package::read(path, limits);
    for (const XmlPart& part : package.parts()) text += part.name + ' ';
    for (const Finding& finding : package.findings()) text += '[' + finding.message + ']';
    return text;
  } catch (const ReadError& error) {
    return error.what();
  }
}

TEST(PackageTest, ReadsFlatFilesPackagesAndFoldersAlike) {
  const TemporaryFolder folder;
  folder.write("unpacked/styles.xml", kStyles);
  folder.write("unpacked/content.xml", kContent);
  const std::vector<std::pair<std::string, std::string>> entries = {
      {"mimetype", kType},
      {"content.xml", kContent},
      {"styles.xml", kStyles},
      {"META-INF/manifest.xml", manifest("<m:file-entry m:full-path=\"styles.xml\"/>")},
      {"../styles.xml", "outside"},
      {"/etc/passwd", "outside"},
      {"Pictures/styles.xml", "other"}};
  for (const std::string& path :
       {folder.zip("a.odt", entries), folder.zip("named-wrongly.fodt", entries), (folder / "unpacked").string()}) {
    const RawDocument document = RawDocument::read(Package::read(path));
    ASSERT_EQ(document.styles.size(), 2u) << path;
    EXPECT_EQ(document.styles[0].name, "A");
    EXPECT_EQ(document.styles[1].name, "P1");
    EXPECT_EQ(document.parts[1].name, "content.xml");
    EXPECT_TRUE(document.findings.empty());
  }
  EXPECT_FALSE(std::filesystem::exists(folder / "../styles.xml"));
  EXPECT_EQ(RawDocument::read(Package::read(folder.write("a.fodt", flat(paragraphStyle("A"))))).styles.size(), 1u);
}

TEST(PackageTest, RefusesWhatIsDamagedEncryptedOrTooLarge) {
  const TemporaryFolder folder;
  const std::string whole = folder.zip("whole.odt", {{"styles.xml", kStyles}, {"content.xml", kContent}});
  std::ifstream stream(whole, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  std::string flipped = bytes;
  for (std::size_t at = 60; at < 120; ++at) flipped[at] = static_cast<char>(flipped[at] ^ 0x55);
  PackageLimits small;
  small.partBytes = 1 << 20;
  const std::string encrypted =
      manifest("<m:file-entry m:full-path=\"content.xml\"><m:encryption-data m:checksum=\"x\"/></m:file-entry>");
  struct Case {
    std::string path;
    std::string expected;  // part of the outcome
  };
  const Case cases[] = {
      {folder.write("cut.odt", bytes.substr(0, bytes.size() / 2)), "damaged package"},
      {folder.write("not.odt", "<a/>"), "damaged package"},
      {folder.write("flipped.odt", flipped), "content.xml [" + std::string()},
      {folder.zip("locked.odt", {{"styles.xml", kStyles}, {"content.xml", kContent}}, "secret"), "encrypted"},
      {folder.zip("sealed.odt", {{"styles.xml", kStyles}, {"META-INF/manifest.xml", encrypted}}), "encrypted"},
      {folder.zip("bomb.odt", {{"styles.xml", std::string(std::size_t{8} << 20, ' ')}}),
       "inflates to more than 1048576 bytes"},
      {folder.zip("half.odt", {{"styles.xml", std::string(std::size_t{8} << 20, ' ')}, {"content.xml", kContent}}),
       "content.xml ["},
      {folder.write("large.fodt", std::string(std::size_t{2} << 20, ' ')), "larger than 1048576 bytes"},
      {folder.zip("other.odt", {{"word/document.xml", "<a/>"}}), "neither styles.xml nor content.xml"},
      {folder.zip("typed.odt", {{"mimetype", "application/zip"}, {"styles.xml", kStyles}}), "styles.xml [not the type"},
      {(folder / "missing.odt").string(), "no such file"},
  };
  for (const Case& item : cases) EXPECT_THAT(outcome(item.path, small), testing::HasSubstr(item.expected)) << item.path;
}

TEST(PackageTest, NoOtherFileIsTouchedAndNothingWaits) {
  const TemporaryFolder folder;
  const std::string secret = folder.write("secret.xml", kStyles);
  std::filesystem::create_directories(folder / "links");
  std::filesystem::create_symlink(secret, folder / "links/styles.xml");
  EXPECT_THAT(outcome((folder / "links").string()), testing::HasSubstr("leads out of the folder"));
  std::filesystem::create_directories(folder / "pipes");
  ASSERT_EQ(mkfifo((folder / "pipes/styles.xml").c_str(), 0600), 0);
  EXPECT_THAT(outcome((folder / "pipes").string()), testing::HasSubstr("not a regular file"));
  EXPECT_THAT(outcome("/dev/zero"), testing::HasSubstr("not a regular file"));
  EXPECT_THAT(outcome((folder / "pipes/styles.xml").string()), testing::HasSubstr("not a regular file"));
}

}  // namespace
