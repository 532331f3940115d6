// SPDX-License-Identifier: MIT
#include <archiving/ZTARegistryInternal.h>
#include <archiving/ZTAValueCodingInternal.h>
#include <archiving/ZTAXMLTreeInternal.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <archiving/ZTAXMLUnarchiverStateInternal.h>
#include <platform/ZTFormat.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace zt {

namespace {

/// The text that the bytes stand for.
std::string unpacked(std::string bytes, const ZTAUnarchiverOptions& options) {
  return ztaUnpack(std::move(bytes), options.fileName, options.limits.bytes);
}

bool holds(const std::vector<std::string_view>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

ZTAXMLUnarchiver::ZTAXMLUnarchiver(std::string bytes, ZTAUnarchiverOptions options)
    : mState(std::make_unique<State>(unpacked(std::move(bytes), options), std::move(options))) {
  checkArchive();
  collectEntries();
}

ZTAXMLUnarchiver::~ZTAXMLUnarchiver() {
  if (!mState) return;  // nothing has been parsed
  // Objects that refer to one another in circles have an element that is referred to.
  std::vector<Ref<NSObject>> referrers = std::move(mState->referrers);
  for (const Entry& entry : mState->entries) xml::addReferrer(referrers, entry.object());
  mState.reset();
  xml::releaseReferrers(std::move(referrers));
}

Ref<ZTAXMLUnarchiver> ZTAXMLUnarchiver::unarchiverForBytes(std::string bytes, ZTAUnarchiverOptions options) {
  return Ref<ZTAXMLUnarchiver>(new ZTAXMLUnarchiver(std::move(bytes), std::move(options)));
}

Ref<ZTAXMLUnarchiver> ZTAXMLUnarchiver::unarchiverForFile(const std::string& path, ZTAUnarchiverOptions options) {
  options.fileName = path;
  std::string bytes = ztaReadFile(path, options.limits.bytes);
  return unarchiverForBytes(std::move(bytes), std::move(options));
}

bool ZTAXMLUnarchiver::looksLikeArchive(std::string_view bytes) noexcept {
  return ztaBeginning(bytes, 4096).find(xml::view(CorvaleNamespace.href)) != std::string::npos;
}

NSObject* ZTAXMLUnarchiver::metadataForKey(std::string_view key) const {
  auto found = mState->metadata.find(key);
  return found == mState->metadata.end() ? nullptr : found->second.get();
}

void ZTAXMLUnarchiver::setMetadataForKey(Ref<NSObject> entry, std::string_view key) {
  if (entry) {
    mState->metadata.insert_or_assign(std::string(key), std::move(entry));
  } else if (auto found = mState->metadata.find(key); found != mState->metadata.end()) {
    mState->metadata.erase(found);
  }
}

std::uint64_t ZTAXMLUnarchiver::version() const noexcept { return mState->version; }
const std::string& ZTAXMLUnarchiver::fileName() const noexcept { return mState->options.fileName; }
const std::vector<Ref<ZTAError>>& ZTAXMLUnarchiver::findings() const noexcept { return mState->findings; }
std::size_t ZTAXMLUnarchiver::findingCount() const noexcept { return mState->findingCount; }
void ZTAXMLUnarchiver::setErrorHandler(Ref<ZTAErrorHandler> handler) { mState->errorHandler = std::move(handler); }

Ref<ZTAError> ZTAXMLUnarchiver::errorAt(const _xmlNode* node, std::string message) const {
  const std::size_t line = node != nullptr && mState->tree.contains(node) ? ZTAXMLTree::lineOf(node) : 0;
  return ZTAError::withMessage(std::move(message), fileName(), line);
}

void ZTAXMLUnarchiver::report(const _xmlNode* node, std::string message) {
  ++mState->findingCount;
  if (mState->findings.size() >= mState->options.limits.findings) return;
  Ref<ZTAError> error = errorAt(node, std::move(message));
  if (mState->errorHandler) {
    if (Ref<ZTAError> handled = mState->errorHandler->handleError(error)) error = std::move(handled);
  }
  mState->findings.push_back(std::move(error));
}

void ZTAXMLUnarchiver::raise(const _xmlNode* node, std::string message) const {
  throw ZTAArchiveException(errorAt(node, std::move(message)));
}

void ZTAXMLUnarchiver::checkArchive() {
  const xmlNode* root = mState->tree.root();
  if (!xml::isOurs(root) || !xml::isNamed(root, xml::kArchive)) {
    raise(root, format("expected the root element '%s' of the namespace '%s', found '%s'", xml::kArchive,
                       xml::view(CorvaleNamespace.href), shortened(xml::view(root->name))));
  }
  const std::string_view text = xml::attribute(root, xml::kVersion);
  const char* end = text.data() + text.size();
  const auto [last, code] = std::from_chars(text.data(), end, mState->version);
  if (text.empty() || code != std::errc() || last != end) {
    raise(root, format("expected a version number in the archive's '%s', found '%s'", xml::kVersion, shortened(text)));
  }
  const std::uint64_t oldest = mState->options.oldestVersion;
  const std::uint64_t newest = mState->options.newestVersion;
  if (version() < oldest || version() > newest) {
    raise(root, format("expected an archive of version %d to %d, found version %d", oldest, newest, version()));
  }
}

void ZTAXMLUnarchiver::collectEntries() {
  State& state = *mState;
  state.entries.reserve(state.tree.identified().size());  // entries stay where they are
  state.referrers.reserve(state.tree.identified().size());
  for (xmlNode* node : state.tree.identified()) {
    const std::string_view id = xml::attribute(node, xml::kId);
    if (!state.ids.try_emplace(id, static_cast<std::uint32_t>(state.entries.size())).second) {
      report(node, format("the id '%s' has been given before; the first element keeps it", shortened(id)));
      continue;
    }
    state.entries.emplace_back(node);
    node->_private = reinterpret_cast<void*>(state.entries.size());  // NOLINT(performance-no-int-to-ptr)
  }
}

void ZTAXMLUnarchiver::reportUnknownAttributes(const _xmlNode* node, const ZTAArchivedItems* items) {
  const auto isArchivers = [](std::string_view name) {
    return name == xml::kClass || name == xml::kId || name == xml::kTo || name == xml::kAncestor ||
           name == xml::kOptional;
  };
  for (const xmlAttr* each = node->properties; each != nullptr; each = each->next) {
    const std::string_view name = xml::view(each->name);
    const bool isOurs = xml::isIn(each->ns, CorvaleNamespace);
    if (isOurs && (isArchivers(name) || (items != nullptr && holds(items->attributes, name)))) continue;
    report(node, format("expected no attribute '%s' in '%s'", shortened(name), shortened(xml::view(node->name))));
  }
}

void ZTAXMLUnarchiver::reportUnknown(const _xmlNode* node, const ZTAArchivedItems* items) {
  reportUnknownAttributes(node, items);
  std::vector<std::string_view> seen;
  for (const xmlNode* each = node->children; each != nullptr; each = each->next) {
    if (each->type == XML_TEXT_NODE && xml::view(each->content).find_first_not_of(" \t\r\n") != std::string::npos) {
      report(node, format("expected no text in '%s', found '%s'", shortened(xml::view(node->name)),
                          shortened(xml::view(each->content))));
    }
    if (items == nullptr || !xml::isElement(each) || ztaxmlOkToSkipNode(each)) continue;
    const std::string_view name = xml::view(each->name);
    const bool isRepeated = holds(items->repeated, name);
    if (!xml::isOurs(each) || (!isRepeated && !holds(items->children, name))) {
      report(each, format("expected no element '%s' in '%s'", shortened(name), shortened(xml::view(node->name))));
    } else if (holds(seen, name)) {
      report(each, format("the element '%s' has been given before; the first one counts", shortened(name)));
    } else if (!isRepeated) {
      seen.push_back(name);
    }
  }
}

void ZTAXMLUnarchiver::setReplacementForObject(Ref<NSObject> replacement, Ref<NSObject> object) {
  const NSObject* replaced = object.get();
  mState->replacements.erase(replacement.get());  // no way leads in a circle
  mState->replacements.insert_or_assign(replaced, std::pair(std::move(object), std::move(replacement)));
}

NSObject* ZTAXMLUnarchiver::replacementForObject(const NSObject* object) const {
  auto& replacements = mState->replacements;
  auto found = replacements.find(object);
  if (found == replacements.end()) return nullptr;
  // What replaced it may have been replaced too: the way is shortened while it is walked.
  for (auto next = replacements.find(found->second.second.get()); next != replacements.end();
       next = replacements.find(found->second.second.get())) {
    found->second.second = next->second.second;
  }
  return found->second.second.get();
}

bool ZTAXMLUnarchiver::hasReplacements() const noexcept { return !mState->replacements.empty(); }

/// What stands among the objects that others refer to, and nobody does.
void ZTAXMLUnarchiver::reportUnreferred(const _xmlNode* shelf) {
  reportUnknown(shelf);
  for (const xmlNode* each = xml::firstElement(shelf); each != nullptr; each = xml::nextElement(each)) {
    const Entry* entry = entryOf(each);
    if ((entry == nullptr || entry->isUnmade()) && !ztaxmlOkToSkipNode(each)) {
      report(each, format("nothing refers to this '%s'", shortened(xml::view(each->name))));
    }
  }
}

Ref<NSObject> ZTAXMLUnarchiver::unarchiveRootObject() {
  xmlNode* archive = mState->tree.root();
  xmlNode* first = xml::firstElement(archive);
  if (first == nullptr) raise(archive, "expected an object in the archive, found none");
  for (const xmlNode* each = xml::nextElement(first); each != nullptr; each = xml::nextElement(each)) {
    if (!xml::isOurs(each) || !xml::isNamed(each, xml::kShelf)) {
      report(each, format("expected the end of the archive, found '%s'", shortened(xml::view(each->name))));
    }
  }
  Ref<NSObject> root = createObjectFromNode(first);
  if (!root) {
    const std::string why = mState->findings.empty() ? "it is not written here" : mState->findings.front()->message();
    raise(first, "the archive's object cannot be made: " + why);
  }
  for (const xmlNode* each = xml::nextElement(first); each != nullptr; each = xml::nextElement(each)) {
    if (xml::isOurs(each) && xml::isNamed(each, xml::kShelf)) reportUnreferred(each);
  }
  const std::vector<Ref<NSObject>> owners = mState->owners;
  for (const Ref<NSObject>& owner : owners) {
    if (auto* coding = dynamic_cast<ZTAXMLCoding*>(owner.get())) coding->postUnarchiveUpgradeForUnarchiver(*this);
  }
  return root;
}

StringRef ZTAXMLUnarchiver::localizedStringForKey(const StringRef& key, const StringRef& prefix) const {
  if (!mState->options.localize) return key;
  StringRef found = mState->options.localize(prefix.text() + key.text());
  return found ? found : key;
}

std::string_view ZTAXMLUnarchiver::textOfNode(const _xmlNode* node) {
  const xmlNode* text = node->children;
  if (text == nullptr) return {};
  if (text->next == nullptr && text->type == XML_TEXT_NODE) return xml::view(text->content);
  report(node, format("expected a text in '%s', found elements", shortened(xml::view(node->name))));
  return {};
}

StringRef ZTAXMLUnarchiver::sharedString(std::string_view text) {
  auto found = mState->strings.find(text);
  if (found == mState->strings.end()) found = mState->strings.insert(StringRef(text)).first;
  return *found;
}

PropertyKey ZTAXMLUnarchiver::propertyKeyForNode(const _xmlNode* node) {
  // Names of one tree are one text each; a node from elsewhere may lose its name while we read.
  if (!mState->tree.contains(node)) return PropertyKey(xml::view(node->name));
  auto found = mState->keys.find(node->name);
  if (found != mState->keys.end()) return found->second;
  if (mState->keys.size() >= mState->options.limits.propertyNames) {
    raise(node, format("the archive has more than the %d different property names that are read", mState->keys.size()));
  }
  const PropertyKey key(xml::view(node->name));
  mState->keys.emplace(node->name, key);
  return key;
}

}  // namespace zt
