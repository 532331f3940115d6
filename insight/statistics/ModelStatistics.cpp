// SPDX-License-Identifier: MIT
#include <insight/statistics/ModelStatistics.h>

#include <map>

namespace zt {

nlohmann::ordered_json modelStatistics(const ZTDocument& document) {
  std::map<std::string_view, std::size_t> kinds;
  std::size_t used = 0;
  std::size_t values = 0;
  const std::vector<ZTSStyle*> styles = document.stylesheet().styles().allObjects();
  for (const ZTSStyle* style : styles) {
    const StyleOrigin* origin = document.originOf(*style);
    ++kinds[originKindName(origin != nullptr ? origin->kind : StyleOrigin::Kind::made)];
    used += style->usageCount() != 0 ? 1 : 0;
    if (const Ref<const PropertyMap> own = style->ZTSStyle::overridePropertyMap()) values += own->count();
  }
  return {{"styles", styles.size()},
          {"named", kinds["named"]},
          {"automatic", kinds["automatic"]},
          {"list_styles", kinds["list"]},
          {"default_styles", kinds["default"]},
          {"in_use", used},
          {"values", values}};
}

}  // namespace zt
