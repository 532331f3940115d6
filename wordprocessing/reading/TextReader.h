// SPDX-License-Identifier: MIT
#pragma once

#include <wordprocessing/reading/WordDocument.h>

#include <unordered_map>

namespace zt {

/// Reads the parts that hold text: which styles and which direct formatting its paragraphs, runs and tables use.
class TextReader : public XmlHandler {
 public:
  explicit TextReader(WordDocument& document) : mDocument(document) {}

  void read(const XmlPart& xml, std::size_t part);
  /// Whether the part that was read last began as one of this format.
  [[nodiscard]] bool sawRoot() const noexcept { return mSawRoot; }

  void startElement(const XmlElement& element) override;
  void endElement() override;

 private:
  enum class Kind : std::uint8_t { other, paragraph, run, table, row, cell, box };

  void begin(Kind kind, int line);
  void end(Kind kind);
  void takeProperties(WordElement properties);
  void takeParagraphProperties(WordElement& properties);
  std::size_t use(StyleFamily family, const std::string* styleId, WordElement properties);

  WordDocument& mDocument;
  std::size_t mPart = 0;
  bool mSawRoot = false;
  std::vector<Kind> mOpen;
  std::vector<std::size_t> mParagraphs;  // open ones: a text box puts paragraphs into a run of another
  std::vector<std::size_t> mTables;      // likewise; `kNowhere` inside a text box
  std::vector<std::size_t> mColumns;     // of the next cell, for each open row
  std::vector<std::size_t> mRuns;        // the uses of the open runs
  ElementBuilder mBuilder;
  std::unordered_map<std::string, std::size_t> mUses;
};

}  // namespace zt
