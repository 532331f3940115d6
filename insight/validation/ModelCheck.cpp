// SPDX-License-Identifier: MIT
#include <insight/validation/ModelCheck.h>

#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>

namespace zt {

namespace {

/// Collects what a validation says, reports and log lines in one order.
class Listener final : public ZTUAssertionHandler, public ZTULogSink {
 public:
  explicit Listener(const ZTDocument& document) : mDocument(document), mHandlerScope(*this), mSinkScope(*this) {}

  std::vector<Finding> takeFindings() { return std::move(mFindings); }

 protected:
  void record(AssertionReport report) override {
    tell(Finding::Severity::error, report.description, asStyle(report.subject.get()));
  }
  void write(const ZTULogEntry& entry) override {
    tell(entry.level == kZTULogNotice ? Finding::Severity::note : Finding::Severity::error, entry.message,
         asStyle(entry.subject.get()));
  }

 private:
  // The finding names the style better than the short description does with which a message begins.
  void tell(Finding::Severity severity, const std::string& text, const ZTSStyle* style) {
    Finding finding;
    finding.severity = severity;
    finding.code = "model";
    finding.message = text;
    finding.place = SourcePlace{mDocument.shown, 0};
    if (style != nullptr) {
      finding.place = mDocument.placeOf(*style);
      finding.style = mDocument.labelOf(*style);
      if (const std::string named = style->shortDescription() + " -- "; text.starts_with(named))
        finding.message = text.substr(named.size());
    }
    mFindings.push_back(std::move(finding));
  }

  const ZTDocument& mDocument;
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
