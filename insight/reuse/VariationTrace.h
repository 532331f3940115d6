// SPDX-License-Identifier: MIT
#pragma once

#include <insight/reuse/FormattingRequest.h>

#include <string>
#include <vector>

namespace zt {

/// One request for a variation, with the candidates in the order in which the library takes them and why each fits or
/// does not.
struct VariationTrace {
  struct Candidate {
    std::string role;   ///< "base", "style itself", "children of the base"
    std::string style;  ///< its label
    bool isAnswer = false;
    std::string reason;
  };

  Ref<PropertyMap> wanted;            ///< relative to the base, empty where the base has it all
  std::string base;                   ///< its label
  std::vector<Candidate> candidates;  ///< up to the one that answers
  Ref<ZTSStyle> answer;
  bool wasMade = false;
};

/// Makes the request in the document, undoably, and tells how it was answered.
VariationTrace traceVariation(ZTDocument& document, OdfStyle& style, const PropertyMap& values, bool isLocked,
                              bool canReuse);

}  // namespace zt
