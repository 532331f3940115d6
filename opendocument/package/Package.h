// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// An OpenDocument text as it lies on the disk: a flat file, a package or a folder.

#include <document/DocumentFormat.h>
#include <document/Finding.h>
#include <document/package/ZipReader.h>
#include <document/xml/XmlPart.h>

#include <filesystem>
#include <string>
#include <vector>

namespace zt {

/// The parts of a document that tell of styles. Nothing else of a package is opened, and names in
/// it never become paths.
class Package {
 public:
  using Kind = DocumentForm;

  /// Reads the document at `path`: a folder that holds styles.xml or content.xml, a package (told by
  /// its first bytes, not by its name) or a flat file. A part that cannot be read gives a finding as
  /// long as the other one can.
  /// Throws `ReadError` if nothing could be read, and for encrypted packages.
  static Package read(const std::filesystem::path& path, const PackageLimits& limits = {});

  /// A flat document that is in memory already.
  static Package fromFlatText(std::string bytes, std::string shown);

  /// Parts that are in memory already, as those of a document of that kind.
  static Package fromParts(Kind kind, std::vector<XmlPart> parts, std::string shown);

  [[nodiscard]] Kind kind() const noexcept { return mKind; }
  [[nodiscard]] const std::string& shown() const noexcept { return mShown; }

  /// In the order styles.xml, content.xml. Never empty.
  [[nodiscard]] const std::vector<XmlPart>& parts() const noexcept { return mParts; }

  /// The parts; a reader may give their memory back when it is through with them.
  [[nodiscard]] std::vector<XmlPart>& parts() noexcept { return mParts; }

  /// What was wrong with parts that are missing here.
  [[nodiscard]] const std::vector<Finding>& findings() const noexcept { return mFindings; }

 private:
  Package(Kind kind, std::string shown) : mKind(kind), mShown(std::move(shown)) {}

  static Package readFolder(const std::filesystem::path& path, const PackageLimits& limits);
  static Package readZip(const std::filesystem::path& path, const PackageLimits& limits);
  void passOver(const ReadError& error);
  void refuseIfEmpty() const;

  Kind mKind;
  std::string mShown;
  std::vector<XmlPart> mParts;
  std::vector<Finding> mFindings;
};

}  // namespace zt
