// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <platform/NSException.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>
#include <platform/ZTVersion.h>

#include <cstdint>
#include <limits>

namespace apart {
struct Unit {
  int number;
};
std::string describe(const Unit& unit) { return "unit " + std::to_string(unit.number); }
}  // namespace apart

namespace zt {
namespace {

const void* at(std::uintptr_t address) { return reinterpret_cast<const void*>(address); }

TEST(FormatTest, PrintsEveryKindOfArgument) {
  const Ref<NSString> object = NSString::make("body");
  const StringRef absent;
  const char* noText = nullptr;
  const NSObject* noObject = nullptr;
  const Ref<NSString> noRef;
  const struct {
    std::string printed;
    std::string expected;
  } table[] = {
      {format(""), ""},
      {format("100 %% of %@%@", "a", "b"), "100 % of ab"},
      {format("%@ %@ %@ %@", object, object.get(), *object, NSString::stringClass()), "body body body NSString"},
      {format("%@ %@ %@ %@", noObject, noRef, nullptr, absent), "(null) (null) (null) (null)"},
      {format("<%@> <%s> <%s>", StringRef(""), std::string(), noText), "<> <> <(null)>"},
      {format("%s %s %s", std::string("a"), std::string_view("b"), StringRef("c")), "a b c"},
      {format("%@ %@", apart::Unit{7}, "%@"), "unit 7 %@"},
      {format("%p %#x", at(0xBEEF), at(0x1234567890abcdef)), "0xbeef 0x1234567890abcdef"},
      {format("%p %#x %p %p", noObject, nullptr, noRef, at(0)), "0x0 0x0 0x0 0x0"},
      {format("%d %d %d %d", 0, -1, true, std::numeric_limits<std::int64_t>::min()), "0 -1 1 -9223372036854775808"},
      {format("%d %#x %#x", std::numeric_limits<std::uint64_t>::max(), 255, 0), "18446744073709551615 0xff 0x0"},
  };
  for (const auto& row : table) EXPECT_EQ(row.printed, row.expected);
  EXPECT_EQ(format("%p", object), format("%#x", address(object.get())));
}

TEST(FormatTest, RefusesATextThatDoesNotFitItsArguments) {
  const FormatArgument number = 1;
  for (const auto& [text, reason] :
       std::initializer_list<std::pair<const char*, const char*>>{{"%d %d", "too few arguments"},
                                                                  {"none", "too many arguments"},
                                                                  {"%@", "does not fit"},
                                                                  {"%q", "unknown directive"},
                                                                  {"%d cut %", "unknown directive"},
                                                                  {"%#d", "unknown directive"},
                                                                  {"%#", "unknown directive"}}) {
    try {
      formatWithArguments(text, &number, 1);
      ADD_FAILURE() << text;
    } catch (const NSInvalidArgumentException& refused) {
      EXPECT_NE(refused.reason().find(reason), std::string::npos) << refused.what();
    }
  }
  EXPECT_EQ(singleLine("a\nb\tc\r\x1b[2J\x7f \xc3\xa9"), "a\\nb\\tc\\r\\x1b[2J\\x7f \xc3\xa9") << "safe on a terminal";
}

TEST(ExceptionTest, CarriesNameAndReasonAndIsCaughtByKind) {
  try {
    throw NSGenericException("Couldn't get value");
  } catch (const NSException& caught) {
    EXPECT_EQ(caught.name() + "|" + caught.reason(), "NSGenericException|Couldn't get value");
    EXPECT_STREQ(caught.what(), "NSGenericException: Couldn't get value");
  }
  EXPECT_EQ(NSInvalidArgumentException("").name(), "NSInvalidArgumentException");
  EXPECT_EQ(NSInternalInconsistencyException("").name(), "NSInternalInconsistencyException");
}

TEST(VersionTest, LinkedLibraryIsTheVersionTheBuildDeclares) { EXPECT_STREQ(versionString(), ZT_PROJECT_VERSION); }

}  // namespace
}  // namespace zt
