// SPDX-License-Identifier: MIT
#include <document/xml/XmlSplices.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace zt {

void XmlSplices::replace(std::size_t start, std::size_t end, std::string text) {
  if (start == end && text.empty()) return;
  mSplices.push_back({start, end, std::move(text)});
}

std::vector<XmlSplices::Splice> XmlSplices::sorted() const {
  std::vector<Splice> splices = mSplices;
  std::stable_sort(splices.begin(), splices.end(), [](const Splice& first, const Splice& second) {
    return first.start != second.start ? first.start < second.start : first.end < second.end;
  });
  return splices;
}

std::string XmlSplices::applyTo(std::string_view text) const {
  const std::vector<Splice> splices = sorted();
  std::size_t size = text.size();
  std::size_t at = 0;
  for (const Splice& splice : splices) {
    if (splice.start < at || splice.end < splice.start || splice.end > text.size())
      throw std::logic_error("two edits of one text overlap");
    at = splice.end;
    size = size - (splice.end - splice.start) + splice.text.size();
  }
  std::string edited;
  edited.reserve(size);
  at = 0;
  for (const Splice& splice : splices) {
    edited.append(text, at, splice.start - at).append(splice.text);
    at = splice.end;
  }
  return edited.append(text, at);
}

}  // namespace zt
