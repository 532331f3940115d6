// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTARegistryInternal.h>
#include <archiving/ZTAXMLTreeInternal.h>
#include <archiving/ZTAXMLUnarchiver.h>

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

#include <map>
#include <utility>

namespace zt {

/// An element that can be referred to, and what has been made of it: nothing yet; then, while it is being read, a bare
/// object (none for a value); then what came of it, for good.
class ZTAXMLUnarchiver::Entry {
 public:
  explicit Entry(xmlNode* element) noexcept : node(element) {}

  xmlNode* const node;

  [[nodiscard]] bool isUnmade() const noexcept { return mProgress == Progress::unmade; }
  [[nodiscard]] bool isBeingMade() const noexcept { return mProgress == Progress::making; }
  /// The bare object while it is being made, then the one that was made. Either may be none.
  [[nodiscard]] const Ref<NSObject>& object() const noexcept { return mObject; }

  void beginMaking(Ref<NSObject> bare) noexcept {
    mProgress = Progress::making;
    mObject = std::move(bare);
  }
  /// Somebody was handed the bare object and must learn if another comes of it.
  void addHolder(NSObject& holder) { mHolders.emplace_back(&holder); }
  /// Answers those who were handed the bare object.
  std::vector<Ref<NSObject>> endMaking(Ref<NSObject> made) noexcept {
    mProgress = Progress::made;
    mObject = std::move(made);
    return std::exchange(mHolders, {});
  }

 private:
  enum class Progress : std::uint8_t { unmade, making, made };

  Progress mProgress = Progress::unmade;
  Ref<NSObject> mObject;
  std::vector<Ref<NSObject>> mHolders;
};

/// An object that is about to be read, and what must have been made before.
struct ZTAXMLUnarchiver::Frame {
  xmlNode* node;
  Entry* entry = nullptr;          ///< none where nothing can refer to the element
  Ref<NSObject> object = {};       ///< bare
  ZTAXMLCoding* coding = nullptr;  ///< the same object
  std::vector<Entry*> needs = {};  ///< only for an object that archives by reference
  std::size_t nextNeed = 0;
  bool isStandIn = false;  ///< the recorded class is unknown; the object is one of its ancestor
};

struct ZTAXMLUnarchiver::State {
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    std::size_t operator()(const StringRef& text) const noexcept { return (*this)(text.view()); }
  };
  struct TextEqual {
    using is_transparent = void;
    static std::string_view view(std::string_view text) noexcept { return text; }
    static std::string_view view(const StringRef& text) noexcept { return text.view(); }
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const noexcept {
      return view(left) == view(right);
    }
  };

  State(const std::string& text, ZTAUnarchiverOptions&& given)
      : options(std::move(given)), tree(text, options.fileName, options.limits) {}

  ZTAUnarchiverOptions options;
  ZTAXMLTree tree;
  std::uint64_t version = 0;
  std::shared_ptr<const ZTARegistry> registry = ZTARegistry::current();
  std::vector<Entry> entries;
  boost::unordered_flat_map<std::string_view, std::uint32_t> ids;
  std::vector<std::pair<std::string, const ZTClass*>> recentClasses;
  boost::unordered_flat_map<const xmlChar*, PropertyKey> keys;
  boost::unordered_flat_set<StringRef, TextHash, TextEqual> strings;
  std::map<std::string, Ref<NSObject>, std::less<>> metadata;
  boost::unordered_flat_map<const NSObject*, std::pair<Ref<NSObject>, Ref<NSObject>>> replacements;  // old, new
  std::vector<Ref<ZTAError>> findings;
  std::size_t findingCount = 0;
  Ref<ZTAErrorHandler> errorHandler;
  int nesting = 0;
  std::vector<NSObject*> making;         // the objects that are being read, innermost last; held by their frames
  std::vector<Ref<NSObject>> owners;     // the objects that own what they archive, in the order in which they were read
  std::vector<Ref<NSObject>> referrers;  // filled by the destructor, which must not need memory; room for all entries
};

}  // namespace zt
