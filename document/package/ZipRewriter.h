// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Packages with some entries replaced.

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The names of the entries of a package that is in memory, in its order. Throws `ReadError` for what is no package.
std::vector<std::string> zipEntryNames(std::string_view bytes, const std::string& shown);

/// The content of one entry of a package that is in memory; empty where it has none. Throws `ReadError`.
std::string zipEntry(std::string_view bytes, const std::string& name, const std::string& shown);

/// The bytes of a package with the contents of these entries replaced and others dropped. The rest is copied as it is
/// packed, and every entry keeps its place, its time, its attributes and its way of packing, so that `mimetype` stays
/// first and as it is. Throws `ReadError` for what is no package, for one that has a name twice (nobody can say which
/// is meant), that lacks an entry, or whose entry to replace is encrypted.
std::string zipWithEntries(std::string_view bytes, const std::map<std::string, std::string>& replaced,
                           const std::string& shown, const std::vector<std::string>& dropped = {});

}  // namespace zt
