// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>
#include <wordprocessing/reading/WordDocument.h>

namespace zt {

/// A document, and which of its styles each use of the text came to.
struct ImportedWord {
  Ref<ZTDocument> document;
  std::vector<Ref<OdfStyle>> styleOfUse;  ///< by the index of the use; none where a table names no style
};

/// Makes a document of what was read. The defaults of the document become the roots of paragraph and character styles;
/// styles become identified ones under their kind and w:styleId, numbering definitions list styles, instances of them
/// their children; levels and the parts of table styles become anonymous styles that are referred to; the theme one
/// style of a family of its own, to which values refer by name. Direct formatting becomes variations of the style that
/// it stands on, which keep every value that is given: what a paragraph style says may stand between the two.
///
/// What is unclean is repaired, with one finding each: a base that is missing, of another kind or in a loop gives way
/// to the root of the kind; of styles with one id the first keeps it and others get a new one (17.7.4.17); a value that
/// cannot be used is not set.
///
/// Uses in the text are counted on the styles. Nothing can be undone. Linear in the size of the document.
ImportedWord importWord(const WordDocument& raw);

}  // namespace zt
