// SPDX-License-Identifier: MIT
#include <tool/console/StatisticsText.h>

#include <fmt/format.h>

namespace zt {

namespace {

using Json = nlohmann::ordered_json;

std::string join(const Json& counts) {
  std::string text;
  for (const auto& [name, count] : counts.items()) {
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, count.dump());
  }
  return text.empty() ? "none" : text;
}

}  // namespace

std::string statisticsAsText(const Json& statistics) {
  const auto number = [&statistics](const char* key) { return statistics[key].dump(); };
  std::string text = fmt::format("{}\n", statistics["document"].get<std::string>());
  const auto line = [&text](std::string_view label, const std::string& value) {
    text += fmt::format("  {:<28}{}\n", label, value);
  };
  line("named styles", fmt::format("{}  ({})", number("named_total"), join(statistics["named"])));
  line("automatic styles", fmt::format("{}  ({})", number("automatic_total"), join(statistics["automatic"])));
  std::string defaults;
  for (const auto& family : statistics["default_styles"])
    defaults += (defaults.empty() ? "" : ", ") + family.get<std::string>();
  line("default styles", defaults.empty() ? "none" : defaults);
  line("list styles", join(statistics["list_styles"]));
  line("chain lengths, named", join(statistics["named_chain_length"]));
  line("chain lengths, automatic", join(statistics["automatic_chain_length"]));
  line("missing parents", number("missing_parents"));
  line("in parent loops", number("in_parent_loops"));
  line("property names", number("distinct_property_names"));
  line("distinct automatic styles", fmt::format("{}, {} without revision marks", number("automatic_distinct"),
                                                number("automatic_distinct_without_rsid")));
  line("redundant automatic styles", fmt::format("{} ({:.1f}%)", number("automatic_redundant"),
                                                 statistics["automatic_redundant_share"].get<double>() * 100));
  line("entries as inherited", number("entries_equal_to_inherited"));
  line("references from the text", join(statistics["references_from_content"]));
  line("used, with their parents", join(statistics["used_with_parents"]));
  line("unused", join(statistics["unused_with_parents"]));
  line("references between styles", join(statistics["references_between_styles"]));
  return text;
}

}  // namespace zt
