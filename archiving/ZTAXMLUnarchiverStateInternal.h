#pragma once

#include <archiving/ZTARegistryInternal.h>
#include <archiving/ZTAXMLTreeInternal.h>
#include <archiving/ZTAXMLUnarchiver.h>

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

#include <map>
#include <utility>

namespace zt {

/// An element that can be referred to, and what has been made of it.
struct ZTAXMLUnarchiver::Entry {
  enum class Progress : std::uint8_t { unmade, making, made };

  xmlNode* node;
  Progress progress = Progress::unmade;
  Ref<NSObject> object = {};                ///< bare while it is being made; may be none when it is made
  std::vector<Ref<NSObject>> holders = {};  ///< who was handed the bare object
};

/// An object that is about to be read, and what must have been made before.
struct ZTAXMLUnarchiver::Frame {
  xmlNode* node;
  Entry* entry = nullptr;
  Ref<NSObject> object = {};
  ZTAXMLCoding* coding = nullptr;
  std::vector<Entry*> needs = {};
  std::size_t nextNeed = 0;
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
  std::vector<Ref<ZTAError>> findings;
  std::size_t findingCount = 0;
  Ref<ZTAErrorHandler> errorHandler;
  int nesting = 0;
  std::vector<NSObject*> making;      // the objects that are being read, innermost last; held by their frames
  std::vector<Ref<NSObject>> owners;  // the objects that own what they archive, in the order in which they were read
};

}  // namespace zt
