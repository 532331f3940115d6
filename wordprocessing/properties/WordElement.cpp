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

/// Shows another handler what applies. No extension is understood here, so that no choice is ever taken.
class Alternatives : public XmlHandler {
 public:
  explicit Alternatives(XmlHandler& handler) : mHandler(handler) {}

  void startElement(const XmlElement& element) override {
    const Way above = mWays.empty() ? Way::shown : mWays.back();
    Way way = above == Way::hidden ? Way::hidden : Way::shown;
    if (element.prefix == "mc" && way == Way::shown) {
      if (element.name == "AlternateContent") way = Way::wrapper;
      if (element.name == "Fallback" && above == Way::wrapper) way = Way::transparent;
      if (element.name == "Choice") way = Way::hidden;
    } else if (above == Way::wrapper) {
      way = Way::hidden;
    }
    mWays.push_back(way);
    if (way == Way::shown) mHandler.startElement(element);
  }

  void endElement() override {
    const Way way = mWays.back();
    mWays.pop_back();
    if (way == Way::shown) mHandler.endElement();
  }

  void text(std::string_view text) override {
    if (mWays.empty() || mWays.back() == Way::shown || mWays.back() == Way::transparent) mHandler.text(text);
  }

 private:
  enum class Way : std::uint8_t { shown, wrapper, transparent, hidden };

  XmlHandler& mHandler;
  std::vector<Way> mWays;  // of the open elements
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

void readWordXml(const XmlPart& part, XmlHandler& handler, std::vector<Finding>& findings) {
  Alternatives alternatives(handler);
  readXml(part, alternatives, findings, {.depth = kDeepest});
}

}  // namespace zt
