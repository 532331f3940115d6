// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What a reader has to say about a document: a problem at a place and what was done about it.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zt {

/// A place in a document: the part it was read from, as a user would find it again, and a line.
struct SourcePlace {
  std::string file;  ///< "letter.fodt", "letter.odt:styles.xml", "folder/content.xml"
  int line = 0;      ///< from 1; 0 if the whole file is meant

  /// "letter.fodt:12", or "letter.fodt" for line 0.
  [[nodiscard]] std::string text() const { return line > 0 ? file + ':' + std::to_string(line) : file; }
};

/// Something unclean that was read nevertheless.
struct Finding {
  enum class Severity : std::uint8_t {
    note,     ///< repaired without loss
    warning,  ///< something was replaced or not taken over
    error,    ///< a part, or the rest of it, could not be read
  };

  Severity severity = Severity::warning;
  std::string code;  ///< a stable word for programs, such as "missing-parent"
  SourcePlace place;
  std::string style;    ///< the style concerned, such as "paragraph:P1"; may be empty
  std::string message;  ///< what was found and what was done
};

/// "error", "warning" or "note".
std::string_view severityName(Finding::Severity severity);

/// Input that cannot be read at all, or not beyond the place. `what()` is "place: message".
class ReadError : public std::runtime_error {
 public:
  ReadError(SourcePlace place, const std::string& message)
      : std::runtime_error(place.text() + ": " + message), mPlace(std::move(place)), mMessage(message) {}

  [[nodiscard]] const SourcePlace& place() const noexcept { return mPlace; }
  [[nodiscard]] const std::string& message() const noexcept { return mMessage; }

 private:
  SourcePlace mPlace;
  std::string mMessage;
};

}  // namespace zt
