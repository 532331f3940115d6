// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Names of OpenDocument and WordprocessingML by namespace address. The prefix that a file happens to use means
/// nothing.

#include <string>
#include <string_view>

namespace zt {

/// The prefix under which a namespace is known everywhere ("fo", "style", ...), whatever the file
/// calls it. The addresses that drafts before OpenDocument 1.0 used for fo and svg count as theirs.
/// Empty for "no namespace" and for an address that has no known prefix.
std::string_view standardPrefix(std::string_view address);

/// A prefix for any address: the standard one; else one made from the address alone, so that it
/// does not depend on the file; "none" for no namespace. Always a valid part of an XML name.
std::string prefixForAddress(std::string_view address);

/// The address that belongs to a standard prefix, empty if there is none.
std::string_view addressForPrefix(std::string_view prefix);

}  // namespace zt
