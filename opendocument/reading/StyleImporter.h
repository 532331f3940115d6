// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>
#include <opendocument/reading/RawDocument.h>

namespace zt {

/// Makes a document of what was read. Default styles become the identified root style of their
/// family (an empty one where the file has none), from which every style without a parent inherits;
/// named styles become identified ones, automatic styles and the levels of lists anonymous ones, all
/// with an exact type for every value that is understood and with opaque text for the rest.
///
/// What is unclean is repaired, with one finding each: a parent that is missing, automatic, of
/// another family or in a loop gives way to the root; of repeated named styles the later counts, of
/// repeated automatic ones the earlier; a value that cannot be used is not set.
///
/// Uses in the text are counted on the styles. Nothing can be undone. Linear in the size of the
/// document.
Ref<ZTDocument> importStyles(const RawDocument& raw);

}  // namespace zt
