// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <chrono>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace zt {

/// Replays the anonymous styles of a document (its automatic styles and the levels of its lists) as formatting
/// requests: all are taken out of the stylesheet; then, in their order, each is asked for as a variation of its base
/// with its values. References, uses and what the document noted of the style go over to the answer. A style without
/// a base comes back as it was.
///
/// The document is changed for good, without undo. What a replayed style looked like, its answer looks like; where
/// that should not be so, it is counted as different.
class Deduplication {
 public:
  explicit Deduplication(ZTDocument& document);

  struct Counts {
    std::size_t before = 0;     ///< anonymous styles of the family
    std::size_t found = 0;      ///< requests that an existing style answered, the base included
    std::size_t made = 0;       ///< requests for which a style was made, or came back: as many remain
    std::size_t different = 0;  ///< answers that do not look like what was replayed
  };
  [[nodiscard]] const std::map<std::string, Counts>& byFamily() const noexcept { return mByFamily; }
  [[nodiscard]] Counts total() const;

  struct Answer {
    std::string style;   ///< what was replayed
    std::string answer;  ///< the base, or the first style that has the same answer
    bool wasMade = false;
  };
  /// In the order of the requests.
  [[nodiscard]] const std::vector<Answer>& answers() const noexcept { return mAnswers; }

  /// What the requests themselves took.
  [[nodiscard]] std::chrono::nanoseconds time() const noexcept { return mTime; }

 private:
  void replay(const Ref<OdfStyle>& style, const PropertyMap& appearance);
  /// A style that was replaced, as what replaced it; any other value as it is.
  [[nodiscard]] Ref<NSObject> nowIn(const Ref<NSObject>& value) const;
  /// Whether it looks as it did before, but for styles that were replaced.
  [[nodiscard]] bool isStill(const PropertyMap& before, const PropertyMap& now) const;

  ZTDocument& mDocument;
  std::map<std::string, Counts> mByFamily;
  std::vector<Answer> mAnswers;
  std::vector<std::pair<Ref<OdfStyle>, Ref<OdfStyle>>> mReplayed;  // each with its answer
  std::unordered_map<const ZTSStyle*, Ref<NSObject>> mReplaced;    // the same, to look up
  std::chrono::nanoseconds mTime{0};
};

}  // namespace zt
