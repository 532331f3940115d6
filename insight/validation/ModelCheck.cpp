#include <insight/validation/ModelCheck.h>

#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>

#include <unordered_map>

namespace zt {

namespace {

/// Collects what a validation says, reports and log lines in one order.
class Listener final : public ZTUAssertionHandler, public ZTULogSink {
 public:
  explicit Listener(const ZTDocument& document) : mDocument(document), mHandlerScope(*this), mSinkScope(*this) {
    for (const ZTSStylesheet* sheet = &document.stylesheet(); sheet != nullptr; sheet = sheet->parent()) {
      for (const Ref<ZTSStyle>& style : sheet->retainedStyles()) {
        mByAddress.emplace(style.get(), style);
        mByDescription.emplace(style->shortDescription(), style);
      }
    }
  }

  std::vector<Finding> takeFindings() { return std::move(mFindings); }

 protected:
  void record(AssertionReport report) override {
    const auto reporting = mByAddress.find(report.object);
    tell(Finding::Severity::error, report.description,
         reporting == mByAddress.end() ? nullptr : reporting->second.get());
  }
  void write(const ZTULogEntry& entry) override {
    tell(entry.level == kZTULogNotice ? Finding::Severity::note : Finding::Severity::error, entry.message, nullptr);
  }

 private:
  // A message begins with the short description of the style that it concerns, which names the style better than the
  // object that validates; the rest is what people need.
  void tell(Finding::Severity severity, const std::string& text, const ZTSStyle* style) {
    Finding finding;
    finding.severity = severity;
    finding.code = "model";
    finding.message = text;
    if (const std::size_t end = text.find(" -- "); end != std::string::npos) {
      const auto named = mByDescription.find(text.substr(0, end));
      if (named != mByDescription.end()) {
        style = named->second.get();
        finding.message = text.substr(end + 4);
      }
    }
    finding.place = style != nullptr ? mDocument.placeOf(*style) : SourcePlace{mDocument.shown, 0};
    if (style != nullptr) finding.style = mDocument.labelOf(*style);
    mFindings.push_back(std::move(finding));
  }

  const ZTDocument& mDocument;
  std::unordered_map<const void*, Ref<ZTSStyle>> mByAddress;
  std::unordered_map<std::string, Ref<ZTSStyle>> mByDescription;
  std::vector<Finding> mFindings;
  ZTUAssertionHandler::Scope mHandlerScope;
  ZTULogSink::Scope mSinkScope;
};

}  // namespace

std::vector<Finding> checkModel(const ZTDocument& document) {
  Listener listener(document);
  std::vector<Ref<ZTSStylesheet>> sheets;
  p_addParentAndStylesheet(sheets, document.stylesheet());
  for (const Ref<ZTSStylesheet>& sheet : sheets) sheet->validate();
  return listener.takeFindings();
}

}  // namespace zt
