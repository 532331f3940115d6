// SPDX-License-Identifier: MIT
#include <insight/reuse/VariationTrace.h>

#include <fmt/format.h>

namespace zt {

namespace {

/// What keeps a candidate from answering; empty if nothing does.
std::string obstacle(const ZTSStylesheet& sheet, const ZTSStyle& candidate, const PropertyMap& wanted, bool isLocked) {
  if (candidate.stylesheet() != &sheet) return "belongs to the defaults, not to the document";
  if (candidate.isLocked() != isLocked) return candidate.isLocked() ? "is locked" : "is not locked";
  const Ref<const PropertyMap> own = candidate.overridePropertyMap();
  if (own == nullptr) return wanted.isEmpty() ? "" : "sets nothing itself";
  if (wanted.isEmpty()) return "sets something itself, nothing is wanted";
  return own->isEqual(wanted) ? "" : "sets other values";
}

}  // namespace

VariationTrace traceVariation(ZTDocument& document, OdfStyle& style, const PropertyMap& values, bool isLocked,
                              bool canReuse) {
  ZTSStylesheet& sheet = document.stylesheet();
  const FormattingRequest request(values);
  VariationTrace trace;
  trace.wanted = style.overridePropertyMapWithPropertyMap(request.values.get(), request.overrides.get(), true);
  const ZTSStyle* base = style.isIdentified() ? &style : style.parent();
  if (base != nullptr) trace.base = document.labelOf(*base);

  std::vector<Ref<ZTSStyle>> children;
  if (base != nullptr) children = base->children().retainedSnapshot();
  const std::size_t before = sheet.styles().count();
  trace.answer = sheet.variationOfStyle(&style, {.propertyMap = request.values.get(),
                                                 .overridePropertyMap = request.overrides.get(),
                                                 .isLocked = isLocked,
                                                 .canReuse = canReuse});
  trace.wasMade = sheet.styles().count() != before;

  const auto consider = [&](const char* role, const ZTSStyle& candidate, std::string reason) {
    const bool isAnswer = trace.answer == &candidate;
    if (isAnswer) reason = "has exactly the wanted values";
    trace.candidates.push_back({role, document.labelOf(candidate), isAnswer, std::move(reason)});
    return isAnswer;
  };
  if (!canReuse) {
    trace.candidates.push_back({"none", "", false, "reuse is switched off"});
    return trace;
  }
  if (base != nullptr) {
    std::string reason = obstacle(sheet, *base, *PropertyMap::make(), isLocked);
    if (!trace.wanted->isEmpty()) reason = "lacks the wanted values";
    if (consider("base", *base, std::move(reason))) return trace;
  }
  if (&style != base && consider("style itself", style, obstacle(sheet, style, *trace.wanted, isLocked))) return trace;
  for (std::size_t place = 0; place < children.size(); ++place) {
    if (trace.answer != children[place]) continue;
    trace.candidates.push_back(
        {"children of the base", document.labelOf(*children[place]), true,
         fmt::format("number {} of {} has exactly the wanted values", place + 1, children.size())});
    return trace;
  }
  trace.candidates.push_back(
      {"children of the base", "", false, fmt::format("none of {} has exactly the wanted values", children.size())});
  return trace;
}

}  // namespace zt
