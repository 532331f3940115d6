// SPDX-License-Identifier: MIT
#include <opendocument/package/PackageManifest.h>

#include <document/xml/SafeXml.h>

namespace zt {

namespace {

class ManifestHandler : public XmlHandler {
 public:
  bool isEncrypted = false;

  void startElement(const XmlElement& element) override {
    if (element.prefix != "manifest") return;
    if (element.name == "file-entry") {
      const auto path = element.attribute("manifest", "full-path").value_or("");
      mMatters = path == "styles.xml" || path == "content.xml" || path == "encrypted-package";
    } else if (element.name == "encryption-data") {
      isEncrypted |= mMatters;
    }
  }
  void endElement() override {}

 private:
  bool mMatters = false;
};

}  // namespace

bool manifestTellsOfEncryption(const XmlPart& manifest) {
  ManifestHandler handler;
  std::vector<Finding> findings;
  readXml(manifest, handler, findings);
  return handler.isEncrypted;
}

}  // namespace zt
