// SPDX-License-Identifier: MIT
#pragma once

#include <wordprocessing/reading/WordDocument.h>

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// Reads the parts that hold text: which styles and which direct formatting its paragraphs, runs and tables use.
class TextReader : public WordXmlHandler {
 public:
  explicit TextReader(WordDocument& document) : mDocument(document) {}

  void read(const XmlPart& xml, std::size_t part);
  /// Whether the part that was read last began as one of this format.
  [[nodiscard]] bool sawRoot() const noexcept { return mSawRoot; }

  void startElement(const XmlElement& element) override;
  void endElement() override;
  void passOver(const XmlElement& element) override { noteReference(element); }
  void text(std::string_view text) override;

 private:
  enum class Kind : std::uint8_t { other, paragraph, run, table, row, cell, box, fieldCode };

  struct Open {
    Kind kind = Kind::other;
    std::size_t place = kNowhere;  // of the document's places
  };

  void begin(Kind kind, int line);
  void beginParagraph(int line);
  void end(const Open& open);
  void takeProperties(WordElement properties);
  std::size_t use(StyleFamily family, WordElement properties);
  std::size_t add(std::string key, WordUse use);
  void noteReference(const XmlElement& element);
  void noteReferences(const WordElement& element);
  void noteReference(std::string_view element, const std::string* id, int line);
  void noteField();

  WordDocument& mDocument;
  std::size_t mPart = 0;
  bool mSawRoot = false;
  std::vector<Open> mOpen;
  std::vector<std::size_t> mParagraphs;  // open ones: a text box puts paragraphs into a run of another
  std::vector<std::size_t> mTables;      // likewise; `kNowhere` inside a text box
  std::vector<std::size_t> mColumns;     // of the next cell, for each open row
  std::vector<std::size_t> mRuns;        // the uses of the open runs
  ElementBuilder mBuilder;
  std::string mFieldCode;  // of the paragraph so far, blank after blank
  int mFieldLine = 0;
  bool mIsInFieldCode = false;
};

}  // namespace zt
