// SPDX-License-Identifier: MIT
#include <document/editing/ElementEdits.h>

#include <document/editing/DocumentEditor.h>
#include <document/text/Utf8.h>
#include <document/xml/Namespaces.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace zt {

namespace {

/// The prefix that the text uses for a standard one; none where it has none that is not hidden by a nearer declaration.
std::optional<std::string> writtenPrefix(const std::vector<XmlDeclaredPrefix>& declared, std::string_view standard) {
  if (standard == "none" || standard == "xml") return standard == "xml" ? "xml" : "";
  for (auto each = declared.rbegin(); each != declared.rend(); ++each) {
    if (each->standard != standard || each->written.empty()) continue;
    const bool isHidden = std::any_of(declared.rbegin(), each,
                                      [&](const XmlDeclaredPrefix& nearer) { return nearer.written == each->written; });
    if (!isHidden) return each->written;
  }
  return std::nullopt;
}

/// A prefix for an address that is not declared, and its declaration.
std::pair<std::string, std::string> declarationFor(const std::vector<XmlDeclaredPrefix>& declared,
                                                   const std::string& standard) {
  const std::string_view address = addressForPrefix(standard);
  if (address.empty())
    throw EditError(fmt::format("the namespace of '{}' is not declared where it is needed", standard));
  std::string prefix = standard;
  const auto isTaken = [&] {
    return std::any_of(declared.begin(), declared.end(),
                       [&](const XmlDeclaredPrefix& each) { return each.written == prefix; });
  };
  while (isTaken()) prefix += '_';
  return {prefix, fmt::format(" xmlns:{}=\"{}\"", prefix, address)};
}

std::string asciiText(std::string_view text) {
  std::string ascii;
  while (!text.empty()) {
    std::string_view rest = text;
    const bool isAscii = takeCharacter(rest).value_or(U'\uFFFD') < 0x80;
    const std::string_view character = text.substr(0, text.size() - rest.size());
    ascii += isAscii ? std::string(character) : escapedAttribute(character, true);
    text = rest;
  }
  return ascii;
}

}  // namespace

const PlacedElement::Attribute* PlacedElement::attribute(std::string_view wantedPrefix,
                                                         std::string_view wantedName) const {
  for (const Attribute& each : attributes) {
    if (each.name == wantedName && each.prefix == wantedPrefix) return &each;
  }
  return nullptr;
}

std::vector<const PlacedElement*> PlacedElement::childrenNamed(std::string_view wantedPrefix,
                                                               std::string_view wantedName) const {
  std::vector<const PlacedElement*> found;
  for (const auto& child : children) {
    if (child->name == wantedName && child->prefix == wantedPrefix) found.push_back(child.get());
  }
  return found;
}

std::unique_ptr<PlacedElement> readElement(XmlScanner& scanner) {
  constexpr std::size_t kDeepest = 200;
  std::unique_ptr<PlacedElement> top;
  std::vector<PlacedElement*> open;
  do {
    if (!scanner.isStart()) {
      open.back()->contentEnd = open.back()->isEmpty ? open.back()->tagEnd : scanner.start();
      open.back()->end = scanner.end();
      open.pop_back();
      if (open.empty()) return top;
      continue;
    }
    auto element = std::make_unique<PlacedElement>();
    element->prefix = scanner.prefix();
    element->name = scanner.name();
    element->written = scanner.written();
    element->start = scanner.start();
    element->tagEnd = scanner.end();
    element->isEmpty = scanner.isEmpty();
    for (const XmlPlacedAttribute& each : scanner.attributes()) {
      element->attributes.push_back(
          {std::string(each.prefix), std::string(each.name), each.value(), each.start, each.valueStart, each.end});
    }
    const bool isSame = !open.empty() && open.back()->declared->size() == scanner.declared().size();
    element->declared =
        isSame ? open.back()->declared : std::make_shared<const std::vector<XmlDeclaredPrefix>>(scanner.declared());
    PlacedElement* added = element.get();
    if (open.empty()) {
      top = std::move(element);
    } else {
      open.back()->children.push_back(std::move(element));
    }
    open.push_back(added);
    if (open.size() > kDeepest) throw EditError("a style with more than 200 elements inside each other is not edited");
  } while (scanner.next());
  throw EditError("a style does not end");
}

void ElementEdits::put(std::size_t start, std::size_t end, const std::string& text) {
  mSplices.replace(start, end, mIsAscii ? asciiText(text) : text);
}

void ElementEdits::setAttribute(const PlacedElement& element, std::string_view prefix, std::string_view name,
                                const std::optional<std::string>& value) {
  if (const PlacedElement::Attribute* there = element.attribute(prefix, name)) {
    if (!value) return mSplices.remove(there->start, there->end);
    if (there->value != *value) put(there->valueStart, there->end - 1, escapedAttribute(*value));
    return;
  }
  if (!value) return;
  std::string declaration;
  std::optional<std::string> written = writtenPrefix(*element.declared, prefix);
  if (!written) std::tie(written, declaration) = declarationFor(*element.declared, std::string(prefix));
  const std::size_t place =
      element.attributes.empty() ? element.start + 1 + element.written.size() : element.attributes.back().end;
  put(place, place,
      fmt::format("{} {}{}{}=\"{}\"", declaration, *written, written->empty() ? "" : ":", name,
                  escapedAttribute(*value)));
}

void ElementEdits::addChild(const PlacedElement& parent, const PlacedElement* after, const std::string& text) {
  const std::string child = fitted(*parent.declared, text);
  if (!parent.isEmpty) {
    const std::size_t place = after != nullptr ? after->end : parent.contentEnd;
    return put(place, place, child);
  }
  // The slash gives way to the end of the tag and what closed it to the end tag: more can be put in between.
  const std::size_t place = parent.tagEnd - 1;
  if (!mOpened.insert(parent.start).second) return put(place, place, child);
  put(place - 1, place, '>' + child);
  put(place, parent.tagEnd, "</" + parent.written + '>');
}

std::string ElementEdits::fitted(const std::vector<XmlDeclaredPrefix>& declared, const std::string& text) const {
  XmlSplices splices;
  std::string declarations;
  std::map<std::string, std::string, std::less<>> known;
  const auto prefixFor = [&](std::string_view standard) {
    auto [found, isNew] = known.try_emplace(std::string(standard));
    if (isNew) {
      std::optional<std::string> written = writtenPrefix(declared, standard);
      std::string declaration;
      if (!written) std::tie(written, declaration) = declarationFor(declared, found->first);
      declarations += declaration;
      found->second = *written;
    }
    return found->second;
  };
  XmlScanner scanner(text, XmlScanner::Prefixes::standard);
  std::size_t firstNameEnd = 0;
  const auto replacePrefix = [&](std::size_t place, std::string_view standard) {
    const std::string written = prefixFor(standard);
    if (written == standard) return;
    if (written.empty()) return splices.remove(place, place + standard.size() + 1);
    splices.replace(place, place + standard.size(), written);
  };
  while (scanner.next()) {
    if (scanner.isStart()) {
      if (firstNameEnd == 0) firstNameEnd = scanner.start() + 1 + scanner.written().size();
      replacePrefix(scanner.start() + 1, scanner.prefix());
      for (const XmlPlacedAttribute& each : scanner.attributes()) replacePrefix(each.start + 1, each.prefix);
    } else if (text[scanner.start() + 1] == '/') {
      replacePrefix(scanner.start() + 2, scanner.prefix());
    }
  }
  splices.insert(firstNameEnd, declarations);
  return splices.isEmpty() ? text : splices.applyTo(text);
}

bool ElementEdits::replaceValues(const std::vector<const PlacedElement*>& elements, const std::string& text) {
  struct Change {
    const PlacedElement::Attribute* attribute;
    std::string value;
  };
  std::vector<Change> changes;
  XmlScanner scanner(text, XmlScanner::Prefixes::standard);
  std::vector<const PlacedElement*> open(elements.rbegin(), elements.rend());
  while (scanner.next()) {
    if (!scanner.isStart()) continue;
    if (open.empty()) return false;
    const PlacedElement& element = *open.back();
    open.pop_back();
    for (auto child = element.children.rbegin(); child != element.children.rend(); ++child)
      open.push_back(child->get());
    if (!scanner.is(element.prefix, element.name) || scanner.attributes().size() != element.attributes.size())
      return false;
    for (std::size_t index = 0; index < element.attributes.size(); ++index) {
      const PlacedElement::Attribute& attribute = element.attributes[index];
      const XmlPlacedAttribute& wanted = scanner.attributes()[index];
      if (!wanted.is(attribute.prefix, attribute.name)) return false;
      if (std::string value = wanted.value(); value != attribute.value)
        changes.push_back({&attribute, std::move(value)});
    }
  }
  if (!open.empty()) return false;
  for (const Change& change : changes)
    put(change.attribute->valueStart, change.attribute->end - 1, escapedAttribute(change.value));
  return true;
}

void ElementEdits::replace(const PlacedElement& parent, const std::vector<const PlacedElement*>& elements,
                           const std::string& text) {
  if (elements.empty()) return addChild(parent, nullptr, text);
  if (!text.empty() && replaceValues(elements, text)) return;
  for (const PlacedElement* element : elements) {
    const bool isFirst = element == elements.front();
    put(element->start, element->end, isFirst && !text.empty() ? fitted(*parent.declared, text) : std::string());
  }
}

}  // namespace zt
