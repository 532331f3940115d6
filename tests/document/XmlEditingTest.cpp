// SPDX-License-Identifier: MIT
#include <document/Finding.h>
#include <document/package/ZipRewriter.h>
#include <document/xml/Namespaces.h>
#include <document/xml/XmlBytes.h>
#include <document/xml/XmlScanner.h>
#include <document/xml/XmlSplices.h>

#include <tests/Files.h>
#include <tests/TestDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;

// Every tag with what the scanner says of it.
std::string told(std::string_view text) {
  std::string all;
  XmlScanner scanner(text);
  while (scanner.next()) {
    all += std::to_string(scanner.depth()) + (scanner.isStart() ? '<' : '>');
    all.append(scanner.prefix()).append(1, ':').append(scanner.name());
    for (const XmlPlacedAttribute& attribute : scanner.attributes()) {
      all.append(1, ' ').append(attribute.prefix).append(1, ':').append(attribute.name);
      all += '[' + attribute.value() + ']';
      EXPECT_EQ(text.substr(attribute.valueStart, attribute.raw.size()), attribute.raw);
      EXPECT_THAT(" \t\n", testing::HasSubstr(std::string(text.substr(attribute.start, 1))));
    }
    EXPECT_EQ(text[scanner.start()], '<');
    EXPECT_EQ(text[scanner.end() - 1], '>');
    all += '\n';
  }
  return all;
}

TEST(XmlScannerTest, FindsTagsByNamespaceAndPassesOverEverythingElse) {
  const std::string other = prefixForAddress("urn:other");
  EXPECT_EQ(told("<?xml version='1.0'?><!DOCTYPE a PUBLIC \"x>y\" 'z'><!-- <b> -->\n"
                 "<a xmlns:s='urn:oasis:names:tc:opendocument:xmlns:style:1.0'>text &lt; <![CDATA[<c>]]>"
                 "<s:style\n s:name = 'x&gt;&#65;&#x42;\r\n&quot;'\tplain=\"a>b\"/><s:b xmlns:s='urn:other'"
                 " s:q=''></s:b ></a><!-- end -->"),
            "1<none:a\n2<style:style style:name[x>AB \"] none:plain[a>b]\n2>style:style\n2<" + other + ":b " + other +
                ":q[]\n2>" + other + ":b\n1>none:a\n");
  for (const char* broken : {"<a", "<a b>", "<a></b>", "<a>", "<a b='1>", "<!-- ", "</a>", "<a/", "<a b=1/>"})
    EXPECT_THROW(told(broken), std::runtime_error) << broken;
  EXPECT_EQ(escapedAttribute("a<\"'\n&\xC3\xA4", true), "a&lt;&quot;&apos;&#10;&amp;&#228;");
  EXPECT_EQ(unescapedAttribute(escapedAttribute("a<\"'\n\t\r&\xF0\x9F\x98\x80", true)), "a<\"'\n\t\r&\xF0\x9F\x98\x80");
}

TEST(XmlSplicesTest, ReplacesPiecesAndRefusesOverlaps) {
  XmlSplices splices;
  splices.replace(6, 9, "two");
  splices.insert(3, "A");
  splices.insert(3, "B");
  splices.remove(0, 1);
  EXPECT_EQ(splices.applyTo("0123456789"), "12AB345two9");
  splices.replace(8, 10, "x");
  EXPECT_THROW((void)splices.applyTo("0123456789"), std::logic_error);
}

TEST(XmlBytesTest, GoesFromBytesToTextAndBackInEachEncoding) {
  const std::string text = "<?xml version=\"1.0\" encoding=\"ENC\"?>\r\n<a b='\xC3\xA4'/>\n";
  const auto named = [&](const std::string& encoding) {
    return std::string(text).replace(text.find("ENC"), 3, encoding);
  };
  std::string latin = named("ISO-8859-1");
  latin.replace(latin.find('\xC3'), 2, "\xE4");
  std::string wide;
  for (const char byte : named("UTF-16")) {
    if (byte == '\xC3') continue;
    wide += byte == '\xA4' ? '\xE4' : byte;
    wide += '\0';
  }
  for (const std::string& bytes : {named("UTF-8"), "\xEF\xBB\xBF" + named("utf-8"), latin, "\xFF\xFE" + wide, wide}) {
    const XmlPart part{"flat", "a.fodt", bytes};
    const XmlBytes edited(part);
    EXPECT_THAT(std::string(edited.text()), testing::HasSubstr("<a b='\xC3\xA4'/>"));
    EXPECT_EQ(edited.bytesOf(edited.text()), bytes);
  }
  const XmlPart half{"flat", "a.fodt", "\xFF\xFE" + wide.substr(0, wide.size() - 3)};
  EXPECT_THROW(XmlBytes{half}, ReadError);
}

struct Entry {
  std::string name, packed;
  zip_stat_t facts;
  zip_uint32_t attributes;
};

std::vector<Entry> entriesOf(const std::string& path) {
  zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, nullptr);
  std::vector<Entry> entries(static_cast<std::size_t>(zip_get_num_entries(archive, 0)));
  for (zip_uint64_t index = 0; index < entries.size(); ++index) {
    Entry& entry = entries[index];
    zip_stat_index(archive, index, 0, &entry.facts);
    entry.name = entry.facts.name;
    zip_uint8_t system = 0;
    zip_file_get_external_attributes(archive, index, 0, &system, &entry.attributes);
    zip_file_t* file = zip_fopen_index(archive, index, ZIP_FL_COMPRESSED);
    entry.packed.resize(entry.facts.comp_size);
    zip_fread(file, entry.packed.data(), entry.packed.size());
    zip_fclose(file);
  }
  zip_discard(archive);
  return entries;
}

TEST(ZipRewriterTest, CopiesTheOtherEntriesAsTheyArePacked) {
  const TemporaryFolder folder;
  const std::string path = folder.zip("a.odt", {{"mimetype", "application/vnd.oasis.opendocument.text"},
                                                {"content.xml", std::string(5000, 'c')},
                                                {"Pictures/1.png", std::string(3000, 'p')},
                                                {"styles.xml", std::string(4000, 's')}});
  zip_t* archive = zip_open(path.c_str(), 0, nullptr);
  zip_set_file_compression(archive, 0, ZIP_CM_STORE, 0);
  zip_set_file_compression(archive, 2, ZIP_CM_DEFLATE, 1);
  for (zip_uint64_t index = 0; index < 4; ++index) {
    zip_file_set_mtime(archive, index, 1'000'000'000 + 1000 * static_cast<time_t>(index), 0);
    zip_file_set_external_attributes(archive, index, 0, ZIP_OPSYS_UNIX, 0100640u << 16);
  }
  zip_close(archive);
  const std::string before = contentOf(path);
  const std::string after = zipWithEntries(before, {{"styles.xml", std::string(100, 'x')}}, path);
  const std::string out = folder.write("b.odt", after);
  const std::vector<Entry> first = entriesOf(path);
  const std::vector<Entry> second = entriesOf(out);
  ASSERT_EQ(second.size(), first.size());
  for (std::size_t index = 0; index < first.size(); ++index) {
    SCOPED_TRACE(first[index].name);
    EXPECT_EQ(second[index].name, first[index].name);
    EXPECT_EQ(second[index].facts.mtime, first[index].facts.mtime);
    EXPECT_EQ(second[index].facts.comp_method, first[index].facts.comp_method);
    EXPECT_EQ(second[index].attributes, first[index].attributes);
    EXPECT_EQ(second[index].packed == first[index].packed, first[index].name != "styles.xml");
  }
  EXPECT_EQ(after.substr(30, 8 + 39), "mimetypeapplication/vnd.oasis.opendocument.text");
  EXPECT_THROW((void)zipWithEntries(before, {{"missing.xml", ""}}, path), ReadError);
  EXPECT_THROW((void)zipWithEntries("no package", {}, path), ReadError);
  std::string twice = contentOf(folder.zip("twice.odt", {{"a1.xml", "1"}, {"a2.xml", "2"}}));
  for (std::size_t at = 0; (at = twice.find("a2.xml", at)) != std::string::npos; ++at) twice[at + 1] = '1';
  EXPECT_THROW((void)zipWithEntries(twice, {{"a1.xml", "x"}}, path), ReadError);
  EXPECT_EQ(zipEntryNames(before, path).size(), 4u);
}

}  // namespace
