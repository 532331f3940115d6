// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Documents made from strings.

#include <zip.h>

#include <unistd.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace zt::test {

inline std::filesystem::path dataPath(const std::string& name) {
  return std::filesystem::path(ZT_TEST_DATA_DIR) / "odf" / name;
}

inline nlohmann::json readJson(const std::filesystem::path& path) { return nlohmann::json::parse(std::ifstream(path)); }

/// A folder that is gone when the test ends.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = std::string(ZT_BINARY_DIR) + "/test-XXXXXX";
    mPath = mkdtemp(pattern.data());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }

  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const { return mPath / name; }

  std::string write(const std::string& name, const std::string& bytes) const {
    const auto path = mPath / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
  }

  /// A package with these entries; with a password, encrypted as zip does it.
  std::string zip(const std::string& name, const std::vector<std::pair<std::string, std::string>>& entries,
                  const char* password = nullptr) const {
    const std::string path = (mPath / name).string();
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    for (const auto& [entry, bytes] : entries) {
      const zip_int64_t index = zip_file_add(
          archive, entry.c_str(), zip_source_buffer(archive, bytes.data(), bytes.size(), 0), ZIP_FL_ENC_UTF_8);
      if (password != nullptr) {
        zip_file_set_encryption(archive, static_cast<zip_uint64_t>(index), ZIP_EM_TRAD_PKWARE, password);
      }
    }
    zip_close(archive);
    return path;
  }

 private:
  std::filesystem::path mPath;
};

inline const std::string kDeclarations =
    " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
    " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
    " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
    " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
    " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\""
    " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
    " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\"";

/// A document with the root `root`; the first element of `named` stands on line 2.
inline std::string document(const std::string& root, const std::string& named, const std::string& automatic = {},
                            const std::string& text = {}) {
  return "<office:" + root + kDeclarations + "><office:styles>\n" + named +
         "</office:styles><office:automatic-styles>" + automatic +
         "</office:automatic-styles><office:body><office:text>" + text +
         "</office:text></office:body></office:" + root + ">";
}

inline std::string flat(const std::string& named, const std::string& automatic = {}, const std::string& text = {}) {
  return document("document", named, automatic, text);
}

inline std::string paragraphStyle(const std::string& name, const std::string& rest = "/>") {
  return "<style:style style:name=\"" + name + "\" style:family=\"paragraph\"" + rest + "\n";
}

}  // namespace zt::test
