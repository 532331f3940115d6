// SPDX-License-Identifier: MIT
#include <archiving/ZTARegistryInternal.h>
#include <archiving/ZTAValueCodingInternal.h>
#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLNodesInternal.h>
#include <platform/NSNull.h>
#include <platform/ZTFormat.h>
#include <support/ZTUPointerKeyDictionary.h>

#include <libxml/dict.h>
#include <libxml/parser.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <deque>
#include <map>
#include <utility>
#include <vector>

namespace zt {

/// What is known of one object that codes itself.
struct ZTAXMLArchiver::Written {
  Ref<NSObject> object;      // held: an address must not come back as that of another object
  xmlNode* node = nullptr;   // none while it is only owed
  std::uint64_t id = 0;      // given when it is first referred to
  bool isAnnounced = false;  // it has had its call before being written
  bool isOwed = false;
};

struct ZTAXMLArchiver::State {
  struct FreeDocument {
    void operator()(xmlDoc* tree) const noexcept { xmlFreeDoc(tree); }
  };

  std::uint64_t version;
  std::uint64_t currentVersion;
  ZTAArchiveLimits limits;
  std::vector<bool> propertyNames;  // by the ordinals of their keys
  std::size_t propertyNameCount = 0;
  std::shared_ptr<const ZTARegistry> registry = ZTARegistry::current();
  std::unique_ptr<xmlDoc, FreeDocument> document;
  xmlNode* archive = nullptr;
  std::map<std::string, Ref<NSObject>, std::less<>> metadata;
  ZTUPointerKeyDictionary substitutes;
  std::deque<Written> written;  // its elements stay where they are
  boost::unordered_flat_map<const NSObject*, Written*> places;
  std::vector<Ref<NSObject>> owed;
  std::uint64_t lastId = 0;
  std::shared_ptr<ZTAXMLArchiver*> self;
  Ref<ZTAErrorHandler> errorHandler;
  bool refersOnly = false;  // the object that is being written refers to others and owns none
  bool isWhole = false;     // the root object has been written to its end
  /// Filled by the destructor, which must not need memory: there is room for all substitutes and all that is owed.
  std::vector<Ref<NSObject>> referrers;

  void makeRoomForReferrer() {
    const std::size_t most = substitutes.count() + owed.size() + 1;
    if (referrers.capacity() < most) referrers.reserve(2 * most);
  }
  Written& writtenOf(NSObject& object) {
    Written*& place = places[&object];
    if (place == nullptr) place = &written.emplace_back(Written{Ref<NSObject>(&object)});
    return *place;
  }
};

/// The error handler and the kind of the object that is being written, for as long as it is.
struct ZTAXMLArchiver::ErrorScope {
  State& state;
  Ref<ZTAErrorHandler> handler;
  bool refersOnly;

  ErrorScope(State& all, bool refersOnlyNow)
      : state(all),
        handler(std::exchange(all.errorHandler, {})),
        refersOnly(std::exchange(all.refersOnly, refersOnlyNow)) {}
  ErrorScope(const ErrorScope&) = delete;
  ErrorScope& operator=(const ErrorScope&) = delete;
  ~ErrorScope() {
    state.errorHandler = std::move(handler);
    state.refersOnly = refersOnly;
  }
};

ZTAXMLArchiver::ZTAXMLArchiver(std::uint64_t version) : ZTAXMLArchiver(version, version) {}

ZTAXMLArchiver::ZTAXMLArchiver(std::uint64_t version, std::uint64_t currentVersion)
    : mState(std::make_unique<State>()) {
  mState->version = version;
  mState->currentVersion = currentVersion;
  mState->self = std::make_shared<ZTAXMLArchiver*>(this);
  xmlInitParser();
  mState->document.reset(xmlNewDoc(xml::chars("1.0")));
  if (!mState->document) throw std::bad_alloc();
  // Names in a dictionary of the document: the tree is freed several times faster.
  mState->document->dict = xmlDictCreate();
  mState->document->encoding = xmlStrdup(xml::chars("UTF-8"));
  mState->archive = xmlNewDocNode(mState->document.get(), nullptr, xml::chars(xml::kArchive), nullptr);
  if (mState->archive == nullptr) throw std::bad_alloc();
  xmlDocSetRootElement(mState->document.get(), mState->archive);
  if (xmlNewNs(mState->archive, CorvaleNamespace.href, CorvaleNamespace.prefix) == nullptr) throw std::bad_alloc();
  xmlSetNs(mState->archive, &CorvaleNamespace);
  xml::setAttribute(mState->archive, CorvaleNamespace, xml::kVersion, std::to_string(version));
}

ZTAXMLArchiver::~ZTAXMLArchiver() {
  *mState->self = nullptr;
  std::vector<Ref<NSObject>> referrers = std::move(mState->referrers);
  // The substitutes alone: the objects themselves live elsewhere.
  mState->substitutes.forEachValue([&](const Ref<NSObject>& each) { xml::addReferrer(referrers, each); });
  for (const Ref<NSObject>& each : mState->owed) xml::addReferrer(referrers, each);
  mState.reset();
  xml::releaseReferrers(std::move(referrers));
}
ZTVXMLArchiverForPB::~ZTVXMLArchiverForPB() = default;

std::shared_ptr<ZTAXMLArchiver* const> ZTAXMLArchiver::place() const noexcept { return mState->self; }

std::uint64_t ZTAXMLArchiver::version() const noexcept { return mState->version; }

_xmlDoc* ZTAXMLArchiver::document() const {
  if (mState->archive->children == nullptr) xml::raise("the archive has no root object yet");
  if (!mState->isWhole) xml::raise("the archive is incomplete: its root object has not been written to the end");
  return mState->document.get();
}

NSObject* ZTAXMLArchiver::metadataForKey(std::string_view key) const {
  auto found = mState->metadata.find(key);
  return found == mState->metadata.end() ? nullptr : found->second.get();
}

void ZTAXMLArchiver::setMetadataForKey(Ref<NSObject> entry, std::string_view key) {
  if (entry) {
    mState->metadata.insert_or_assign(std::string(key), std::move(entry));
  } else if (auto found = mState->metadata.find(key); found != mState->metadata.end()) {
    mState->metadata.erase(found);
  }
}

void ZTAXMLArchiver::setEncoderForObject(Ref<NSObject> substitute, Ref<NSObject> object) {
  mState->makeRoomForReferrer();
  mState->substitutes.setObjectForKey(std::move(substitute), std::move(object));
}

NSObject* ZTAXMLArchiver::encoderForObject(const NSObject* object) const {
  return mState->substitutes.objectForKey(object);
}

void ZTAXMLArchiver::removeEncoderForObject(const NSObject* object) { mState->substitutes.removeObjectForKey(object); }

void ZTAXMLArchiver::setErrorHandler(Ref<ZTAErrorHandler> handler) { mState->errorHandler = std::move(handler); }

void ZTAXMLArchiver::setLimits(const ZTAArchiveLimits& limits) { mState->limits = limits; }

_xmlNode* ZTAXMLArchiver::newNodeForPropertyKey(_xmlNode* parent, PropertyKey key) {
  std::vector<bool>& names = mState->propertyNames;
  const std::uint32_t ordinal = key.ordinal();
  if (ordinal >= names.size()) names.resize(ordinal + 1);
  if (!names[ordinal]) {
    if (mState->propertyNameCount >= mState->limits.propertyNames) {
      xml::raise(format("the archive would have more than the %d different property names that are read",
                        mState->limits.propertyNames));
    }
    names[ordinal] = true;
    ++mState->propertyNameCount;
  }
  return ztaxmlNewNsChildNodeOrRaise(parent, CorvaleNamespace, key.string());
}

/// Once the bytes have been counted, before anybody has them. Reading takes less than 32 bytes of tree for a byte of
/// text.
void ZTAXMLArchiver::checkSize(std::size_t bytes) const {
  const ZTAArchiveLimits& limits = mState->limits;
  if (bytes > limits.bytes)
    xml::raise(format("the archive would be longer than the %d bytes that are read", limits.bytes));
  if (bytes > limits.treeBytes / 32 && xml::treeBytes(mState->archive) > limits.treeBytes) {
    xml::raise(format("the archive's tree would be larger than the %d bytes that are used", limits.treeBytes));
  }
}

void ZTAXMLArchiver::setTextOfNode(_xmlNode* node, std::string_view text) {
  if (const std::string_view reason = xml::whyNotText(text); !reason.empty()) {
    xml::raise(format("the text of a '%s' element cannot be written: %s", xml::view(node->name), reason));
  }
  if (text.empty()) return;
  xmlAddChild(node, xml::newText(node->doc, text));
}

void ZTAXMLArchiver::encodeRootObject(NSObject& root) {
  const Ref<NSObject> kept(&root);
  if (mState->archive->children != nullptr) xml::raise("an archiver writes one root object");
  if (auto* coding = dynamic_cast<ZTAXMLCoding*>(&root);
      coding != nullptr && mState->version < mState->currentVersion) {
    coding->preArchiveDowngradeForVersion(mState->version, *this);
  }
  encodeObject(&root, mState->archive, CorvaleNamespace);
  writeOwed();
  mState->isWhole = true;
}

void ZTAXMLArchiver::encodeObject(NSObject* object, _xmlNode* parent, _xmlNs& xmlNamespace) {
  encodeObjectWithName(object, parent, nullptr, xmlNamespace);
}

void ZTAXMLArchiver::encodeObjectWithName(NSObject* object, _xmlNode* parent, const char* name, _xmlNs&) {
  if (name != nullptr) xml::checkName(name);
  if (object == nullptr) object = NSNull::null();
  if (NSObject* substitute = mState->substitutes.count() != 0 ? encoderForObject(object) : nullptr) object = substitute;
  if (!object->isPlainValue() || !writePlatformValue(*object, *this, parent, name)) {
    if (auto* coding = dynamic_cast<ZTAXMLCoding*>(object)) {
      Written& written = mState->writtenOf(*object);
      if (!std::exchange(written.isAnnounced, true)) coding->preencodeHookWithXMLArchiver(*this);
      if (written.node != nullptr || mState->refersOnly) return writeReference(written, parent, name);
      return writeIn(written, *coding, parent, name);
    }
    const ZTARegistry::Coder* coder = mState->registry->coderOfClass(object->classObject());
    if (coder == nullptr)
      xml::raise(format("objects of the class '%@' cannot be written", object->classObject().name()));
    xmlNode* node = xml::newChild(parent, name != nullptr ? name : coder->elementName.c_str());
    if (name != nullptr) xml::setAttribute(node, CorvaleNamespace, xml::kClass, coder->elementName);
    coder->coder->encodeValue(*object, *this, node);
  }
}

void ZTAXMLArchiver::writeIn(Written& written, ZTAXMLCoding& object, _xmlNode* parent, const char* name) {
  xml::checkDepthBelow(parent);
  const std::string* registered = mState->registry->nameOfClass(object.classForCoder());
  const char* ownName = registered != nullptr ? registered->c_str() : xml::kObject;
  written.node = xml::newChild(parent, name != nullptr ? name : ownName);
  if (written.id != 0) xml::setAttribute(written.node, CorvaleNamespace, xml::kId, std::to_string(written.id));

  const ErrorScope scope(*mState, object.archivesByReference());
  try {
    object.encodeWithXMLArchiver(*this, written.node, mState->version);
  } catch (const ZTAArchiveException& exception) {
    if (exception.isHandled() || !mState->errorHandler) throw;
    const Ref<ZTAError> error = mState->errorHandler->handleError(exception.error());
    throw ZTAArchiveException(error ? error : exception.error(), true);
  }
  // The name alone tells the class where it is registered for it; anything else needs a record.
  const bool isTold = name == nullptr && registered != nullptr;
  if (!isTold && !xml::isPresent(xml::attribute(written.node, xml::kClass)))
    ztaxmlSetZTClassOnNodeOrRaise(written.node, object);
}

void ZTAXMLArchiver::writeReference(Written& written, _xmlNode* parent, const char* name) {
  if (written.id == 0) {
    written.id = ++mState->lastId;
    if (written.node != nullptr) {
      xml::setAttribute(written.node, CorvaleNamespace, xml::kId, std::to_string(written.id));
    }
  }
  if (written.node == nullptr && !written.isOwed) {
    mState->makeRoomForReferrer();
    mState->owed.push_back(written.object);
    written.isOwed = true;
  }
  xmlNode* node = xml::newChild(parent, name != nullptr ? name : xml::kReference);
  xml::setAttribute(node, CorvaleNamespace, xml::kTo, std::to_string(written.id));
}

/// What has been referred to and was written by nobody stands at the end of where it belongs, else of the archive.
void ZTAXMLArchiver::writeOwed() {
  xmlNode* shelf = nullptr;
  for (std::size_t index = 0; index < mState->owed.size(); ++index) {  // grows meanwhile
    const Ref<NSObject> object = mState->owed[index];
    Written& written = mState->writtenOf(*object);
    if (written.node != nullptr) continue;
    auto& coding = *dynamic_cast<ZTAXMLCoding*>(object.get());
    if (xmlNode* container = coding.containerInArchive(*this)) {
      writeIn(written, coding, container, nullptr);
      continue;
    }
    if (shelf == nullptr) shelf = xml::newChild(mState->archive, xml::kShelf);
    writeIn(written, coding, shelf, nullptr);
  }
}

}  // namespace zt
