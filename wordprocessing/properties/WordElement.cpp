// SPDX-License-Identifier: MIT
#include <wordprocessing/properties/WordElement.h>

#include <document/xml/OpaqueText.h>

#include <algorithm>

namespace zt {

namespace {

constexpr std::size_t kDeepest = 1'000;

void append(const WordElement& element, OpaqueText& text) {
  std::vector<XmlAttribute> attributes;
  for (const auto& [prefix, name, value] : element.attributes) attributes.push_back({prefix, name, value});
  text.startElement({element.prefix, element.name, attributes, element.line});
  for (const WordElement& child : element.children) append(child, text);
  text.endElement();
}

/// Shows another handler what applies.
class Chooser : public XmlHandler {
 public:
  explicit Chooser(WordXmlHandler& handler) : mHandler(handler) {}

  void startElement(const XmlElement& element) override {
    const Alternatives::Way way = mAlternatives.start(element.prefix, element.name);
    if (way == Alternatives::Way::shown) mHandler.startElement(element);
    if (way == Alternatives::Way::hidden) mHandler.passOver(element);
  }

  void endElement() override {
    if (mAlternatives.end() == Alternatives::Way::shown) mHandler.endElement();
  }

  void text(std::string_view text) override {
    if (mAlternatives.showsText()) mHandler.text(text);
  }

 private:
  WordXmlHandler& mHandler;
  Alternatives mAlternatives;
};

}  // namespace

const std::string* WordElement::attribute(std::string_view wanted) const {
  for (const Attribute& candidate : attributes) {
    if (candidate.name == wanted && candidate.prefix == "w") return &candidate.value;
  }
  return nullptr;
}

const std::string* WordElement::valOf(std::string_view wanted) const {
  const WordElement* found = child(wanted);
  return found != nullptr ? found->val() : nullptr;
}

const WordElement* WordElement::child(std::string_view wanted) const {
  const auto found = std::find_if(children.begin(), children.end(), [&](const auto& each) { return each.is(wanted); });
  return found == children.end() ? nullptr : &*found;
}

std::string canonicalText(const WordElement& element) {
  OpaqueText text;
  append(element, text);
  return text.take();
}

// The open elements are the last children of each other, so that adding one moves no other open one.
void ElementBuilder::startElement(const XmlElement& element) {
  WordElement* added = &mRoot;
  if (mOpen.empty()) {
    mRoot = {};
  } else {
    added = &mOpen.back()->children.emplace_back();
  }
  added->prefix = element.prefix;
  added->name = element.name;
  added->line = element.line;
  added->attributes.reserve(element.attributes.size());
  for (const auto& [prefix, name, value] : element.attributes) {
    added->attributes.push_back({std::string(prefix), std::string(name), std::string(value)});
  }
  mOpen.push_back(added);
}

bool ElementBuilder::endElement() {
  mOpen.pop_back();
  return mOpen.empty();
}

Alternatives::Way Alternatives::start(std::string_view prefix, std::string_view name) {
  const Way above = mWays.empty() ? Way::shown : mWays.back();
  Way way = above == Way::hidden ? Way::hidden : Way::shown;
  if (prefix == "mc" && way == Way::shown) {
    if (name == "AlternateContent") way = Way::wrapper;
    if (name == "Fallback" && above == Way::wrapper) way = Way::transparent;
    if (name == "Choice") way = Way::hidden;
  } else if (above == Way::wrapper) {
    way = Way::hidden;
  }
  mWays.push_back(way);
  return way;
}

Alternatives::Way Alternatives::end() {
  const Way way = mWays.back();
  mWays.pop_back();
  return way;
}

void readWordXml(const XmlPart& part, WordXmlHandler& handler, std::vector<Finding>& findings) {
  Chooser chooser(handler);
  readXml(part, chooser, findings, {.depth = kDeepest});
}

}  // namespace zt
