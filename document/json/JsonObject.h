// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <utility>

namespace zt {

/// Builds a JSON object of any number of members in constant time each. (The library's own way looks
/// for the key among all earlier ones.) The keys must differ.
class JsonObject {
 public:
  void add(std::string key, nlohmann::ordered_json value) {
    static_cast<Members::Container&>(mMembers).emplace_back(std::move(key), std::move(value));
  }
  nlohmann::ordered_json take() { return nlohmann::ordered_json(std::move(mMembers)); }

 private:
  using Members = nlohmann::ordered_json::object_t;
  Members mMembers;
};

}  // namespace zt
