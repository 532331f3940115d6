#pragma once

#include <app/ZTDocument.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace zt {

/// Replays the anonymous styles of a document (its automatic styles and the levels of its lists) as formatting
/// requests: all are taken out of the stylesheet; then, in their order, each is asked for as a variation of its base
/// with its values, references and uses go over to the answer.
///
/// The document is changed for good, without undo. What a replayed style looked like, its answer looks like; where
/// that should not be so, it is counted as different.
class Deduplication {
 public:
  explicit Deduplication(ZTDocument& document);

  struct Counts {
    std::size_t before = 0;     ///< anonymous styles of the family
    std::size_t found = 0;      ///< requests that an existing style answered, the base included
    std::size_t made = 0;       ///< requests for which a style was made: as many remain
    std::size_t different = 0;  ///< answers that do not look like what was replayed
  };
  [[nodiscard]] const std::map<std::string, Counts>& byFamily() const noexcept { return mByFamily; }
  [[nodiscard]] Counts total() const;

  struct Answer {
    std::string style;   ///< what was replayed
    std::string answer;  ///< the base, or the first style that was replayed into the same one
    bool wasMade = false;
  };
  /// In the order of the requests.
  [[nodiscard]] const std::vector<Answer>& answers() const noexcept { return mAnswers; }

  /// What the requests themselves took.
  [[nodiscard]] std::chrono::nanoseconds time() const noexcept { return mTime; }

 private:
  void replay(OdfStyle& style, const PropertyMap& appearance);

  ZTDocument& mDocument;
  std::map<std::string, Counts> mByFamily;
  std::vector<Answer> mAnswers;
  std::map<const ZTSStyle*, Ref<ZTSStyle>> mReplaced;  // from a replayed style to its answer
  std::map<const ZTSStyle*, std::string> mLabels;      // of the styles that were made
  std::vector<Ref<ZTSStyle>> mKept;                    // so that no key above is another style's
  std::chrono::nanoseconds mTime{0};
};

}  // namespace zt
