// SPDX-License-Identifier: MIT

// How an unarchiver makes objects. Objects refer to one another in any order and in circles, over chains of
// any length, so references are not followed by recursion: before an object is read, the objects that its
// element refers to are made, worked off from a stack. One that is on the stack already is part of a circle
// and is handed out bare; should it turn out to be another object, whoever was handed it is told.
//
// Each object takes three steps, each a function here:
// 1. `allocate`: its class is found and a bare object made, or there is none to be had.
// 2. `open`: its entry, if it has one, says from now on that it is being made, and what it refers to is noted.
// 3. `read`: it reads its element, and its entry gets what came of it.
// Between 2 and 3 `readWithNeeds` works off the stack. Values are read at once and have no bare object: their entry
// only says meanwhile that they are being made, since a list may lead back to itself.

#include <archiving/ZTAValueCodingInternal.h>
#include <archiving/ZTAXMLUnarchiverStateInternal.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>

#include <algorithm>

namespace zt {

namespace {

/// How many classes are remembered by the names that a file gives them.
constexpr std::size_t kRecentClasses = 16;

/// Calls with every element below the node.
template <class Visit>
void forEachElementBelow(const xmlNode* top, Visit visit) {
  const xmlNode* node = xml::firstElement(top);
  while (node != nullptr) {
    visit(node);
    if (const xmlNode* child = xml::firstElement(node)) {
      node = child;
      continue;
    }
    while (node != top && xml::nextElement(node) == nullptr) node = node->parent;
    node = node == top ? nullptr : xml::nextElement(node);
  }
}

}  // namespace

/// The error handler and the object that is being read, for as long as it is.
struct ZTAXMLUnarchiver::MakingScope {
  State& state;
  Ref<ZTAErrorHandler> handler;

  MakingScope(State& all, NSObject* object) : state(all), handler(std::exchange(all.errorHandler, {})) {
    state.making.push_back(object);
  }
  MakingScope(const MakingScope&) = delete;
  MakingScope& operator=(const MakingScope&) = delete;
  ~MakingScope() {
    state.making.pop_back();
    state.errorHandler = std::move(handler);
  }
};

struct ZTAXMLUnarchiver::NestingScope {
  State& state;

  explicit NestingScope(State& all) : state(all) { ++state.nesting; }
  NestingScope(const NestingScope&) = delete;
  NestingScope& operator=(const NestingScope&) = delete;
  ~NestingScope() { --state.nesting; }
};

ZTAXMLUnarchiver::Entry* ZTAXMLUnarchiver::entryOf(const _xmlNode* node) const {
  if (node->_private == nullptr || !mState->tree.contains(node)) return nullptr;
  return &mState->entries[reinterpret_cast<std::uintptr_t>(node->_private) - 1];
}

ZTAXMLUnarchiver::Entry* ZTAXMLUnarchiver::entryReferredTo(const _xmlNode* node, std::string_view id) {
  auto found = mState->ids.find(id);
  if (found != mState->ids.end()) return &mState->entries[found->second];
  report(node, format("refers to '%s', and no element has this id", shortened(id)));
  return nullptr;
}

Ref<NSObject> ZTAXMLUnarchiver::createObjectFromNode(_xmlNode* node) { return objectFor(node, nullptr); }

Ref<NSObject> ZTAXMLUnarchiver::createObjectOfClass(const ZTClass& objectClass, _xmlNode* node) {
  Ref<NSObject> object = objectFor(node, &objectClass);
  if (!object || object->classObject().isKindOf(objectClass)) return object;
  report(node, format("expected an object of the class '%@', found one of '%@'", objectClass.name(),
                      object->classObject().name()));
  return {};
}

Ref<NSObject> ZTAXMLUnarchiver::objectFor(_xmlNode* node, const ZTClass* wanted) {
  if (!xml::isOurs(node)) {
    report(node, format("expected an element of the namespace '%s', found '%s'", xml::view(CorvaleNamespace.href),
                        node != nullptr ? shortened(xml::view(node->name)) : "nothing"));
    return {};
  }
  if (mState->tree.hasReferences()) {
    if (const std::string_view to = xml::attribute(node, xml::kTo); xml::isPresent(to)) {
      Entry* entry = entryReferredTo(node, to);
      if (entry == nullptr) return {};
      if (xml::isPresent(xml::attribute(entry->node, xml::kTo))) {
        report(node, format("refers to '%s', which is itself a reference", shortened(to)));
        return {};
      }
      static const auto* nothing = new ZTAArchivedItems;
      if (node->children != nullptr || node->properties->next != nullptr) reportUnknown(node, nothing);
      return entry->isUnmade() ? made(entry->node, wanted, entry) : handOut(*entry, node);
    }
  }
  Entry* entry = entryOf(node);
  if (entry != nullptr && !entry->isUnmade()) return handOut(*entry, node);
  return made(node, wanted, entry);
}

Ref<NSObject> ZTAXMLUnarchiver::handOut(Entry& entry, const _xmlNode* node) {
  if (entry.isBeingMade() && !mState->making.empty()) entry.addHolder(*mState->making.back());
  if (!entry.object()) report(node, "refers to an object that could not be read");
  return entry.object();
}

Ref<NSObject> ZTAXMLUnarchiver::made(_xmlNode* node, const ZTClass* wanted, Entry* entry) {
  // Elements nest no deeper than this, but lists and owners may also be reached through references.
  if (mState->nesting > ZTAArchiveLimits::depth)
    raise(node, format("objects nest deeper than %d levels", ZTAArchiveLimits::depth));
  const NestingScope scope(*mState);
  const std::string_view name = xml::view(node->name);
  const std::string_view recorded = wanted == nullptr ? xml::attribute(node, xml::kClass) : std::string_view();
  // A value's kind is its element's name; where its owner chose that name, it is recorded like a class.
  for (const std::string_view kind : {name, recorded}) {
    if (wanted != nullptr || !xml::isPresent(kind)) continue;
    const bool isPlatformValue = isPlatformValueName(kind);
    const ZTAValueCoder* coder = isPlatformValue ? nullptr : mState->registry->coderNamed(kind);
    if (!isPlatformValue && coder == nullptr) continue;
    if (entry != nullptr) entry->beginMaking({});
    Ref<NSObject> value = isPlatformValue ? readPlatformValue(*this, node, kind) : coder->decodeValue(*this, node);
    if (entry != nullptr) entry->endMaking(value);
    return value;
  }
  Frame frame{node, entry};
  if (allocate(frame, wanted)) {
    open(frame);
    return readWithNeeds(std::move(frame));
  }
  if (entry != nullptr) entry->endMaking({});
  return {};
}

/// The class of the object; none, with a finding, where none is known. Says whether an ancestor stands in.
const ZTClass* ZTAXMLUnarchiver::classFor(const _xmlNode* node, const ZTClass* wanted, bool& isStandIn) {
  const std::string_view recorded = xml::attribute(node, xml::kClass);
  if (!xml::isPresent(recorded)) {
    const ZTClass* named = mState->registry->classNamed(xml::view(node->name));
    if (named == nullptr || (wanted != nullptr && !named->isKindOf(*wanted))) named = wanted;
    if (named == nullptr)
      report(node, format("expected an object or a value, found '%s'", shortened(xml::view(node->name))));
    return named;
  }
  auto& recent = mState->recentClasses;
  for (const auto& [name, known] : recent) {
    if (name == recorded) return known;
  }
  const ZTClass* found = ZTClass::named(recorded);
  if (found == nullptr) {
    found = ZTClass::named(xml::attribute(node, xml::kAncestor));
    isStandIn = found != nullptr;
    if (found == nullptr) report(node, format("no class is named '%s'", shortened(recorded)));
  } else if (recent.size() < kRecentClasses) {
    recent.emplace_back(recorded, found);
  }
  return found;
}

/// Makes the frame's bare object. False, with a finding, where none can be made.
bool ZTAXMLUnarchiver::allocate(Frame& frame, const ZTClass* wanted) {
  const ZTClass* objectClass = classFor(frame.node, wanted, frame.isStandIn);
  if (objectClass == nullptr) return false;
  frame.object = objectClass->allocate();
  frame.coding = dynamic_cast<ZTAXMLCoding*>(frame.object.get());
  if (frame.coding == nullptr) {
    report(frame.node, format("objects of the class '%@' cannot be read", objectClass->name()));
    return false;
  }
  return true;
}

void ZTAXMLUnarchiver::open(Frame& frame) {
  if (frame.entry != nullptr) frame.entry->beginMaking(frame.object);
  if (!mState->tree.hasReferences() || !mState->tree.contains(frame.node) || !frame.coding->archivesByReference())
    return;
  forEachElementBelow(frame.node, [&](const xmlNode* node) {
    const std::string_view to = xml::attribute(node, xml::kTo);
    if (!xml::isPresent(to)) return;
    auto found = mState->ids.find(to);  // one that is missing is told when it is read
    if (found != mState->ids.end()) frame.needs.push_back(&mState->entries[found->second]);
  });
}

/// Reads the object after those that it refers to, and them after theirs.
Ref<NSObject> ZTAXMLUnarchiver::readWithNeeds(Frame first) {
  const auto namesClass = [this](const xmlNode* node) {
    return xml::isPresent(xml::attribute(node, xml::kClass)) ||
           mState->registry->classNamed(xml::view(node->name)) != nullptr;
  };
  std::vector<Frame> waiting;
  waiting.push_back(std::move(first));
  Ref<NSObject> last;
  while (!waiting.empty()) {
    Frame& frame = waiting.back();
    if (frame.nextNeed < frame.needs.size()) {
      Entry& need = *frame.needs[frame.nextNeed++];
      // Only what refers itself can lead on; values and owners are made where they are met.
      if (!need.isUnmade() || !namesClass(need.node)) continue;
      Frame next{need.node, &need};
      if (!allocate(next, nullptr)) {
        need.endMaking({});
      } else if (next.coding->archivesByReference()) {
        open(next);
        waiting.push_back(std::move(next));
      }
      continue;
    }
    Frame ready = std::move(waiting.back());
    waiting.pop_back();
    last = read(ready);
  }
  return last;
}

Ref<NSObject> ZTAXMLUnarchiver::read(Frame& frame) {
  Ref<NSObject> kept;
  {
    const MakingScope scope(*mState, frame.object.get());
    try {
      if (frame.isStandIn) {
        const StringRef className = sharedString(xml::attribute(frame.node, xml::kClass));
        report(frame.node, format("no class is named '%s'; '%@', which it is derived from, stands in for it",
                                  shortened(className.view()), frame.object->classObject().name()));
        frame.coding->standInForClassNamed(className);
      }
      if (frame.coding->initWithXMLUnarchiver(*this, frame.node, version())) {
        kept = frame.coding->initMoreWithXMLUnarchiver(*this, frame.node);
        if (const ZTAArchivedItems* items = kept ? frame.coding->archivedItems() : nullptr)
          reportUnknown(frame.node, items);
      }
    } catch (const ZTAArchiveException& exception) {
      if (exception.isHandled() || !mState->errorHandler) throw;
      const Ref<ZTAError> error = mState->errorHandler->handleError(exception.error());
      throw ZTAArchiveException(error ? error : exception.error(), true);
    } catch (const NSException& exception) {
      report(frame.node, exception.reason());
      throw;
    }
  }
  std::vector<Ref<NSObject>> holders;
  if (frame.entry != nullptr) holders = frame.entry->endMaking(kept);
  if (kept != frame.object) {
    for (const Ref<NSObject>& holder : holders) {
      if (auto* coding = dynamic_cast<ZTAXMLCoding*>(holder.get()))
        coding->replaceUnarchivedObject(*frame.object, kept.get());
    }
  }
  if (kept && !frame.coding->archivesByReference()) mState->owners.push_back(kept);
  return kept;
}

}  // namespace zt
