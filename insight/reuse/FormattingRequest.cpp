// SPDX-License-Identifier: MIT
#include <insight/reuse/FormattingRequest.h>

#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>

namespace zt {

FormattingRequest::FormattingRequest(const PropertyMap& given) {
  for (const PropertyMap::Entry& entry : given) {
    const PropertyRule* rule = propertyRule(entry.key);
    const bool isShare = rule != nullptr && rule->isShareOfParent && asPercentage(entry.value.get()) != nullptr;
    const bool isOwn = rule != nullptr && !rule->isInherited;
    (isShare || isOwn ? overrides : values)->set(entry.key, entry.value);
  }
}

}  // namespace zt
