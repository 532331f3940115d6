#pragma once

#include <ztstyles/ZTSStyle.h>

namespace zt {

/// Lets go of styles that have left their stylesheet for good. Those that only keep one another alive, through
/// values that are styles, are freed; whatever somebody else holds, or what is reachable from it, stays as it is.
void freeReferenceGroups(std::vector<Ref<ZTSStyle>>&& styles);

}  // namespace zt
