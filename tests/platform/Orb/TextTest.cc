// Text forms: quoting, piecewise reading with errors that say what was
// expected, enumeration names and the type registry.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "Orb/EnumText.h"
#include "Orb/Text.h"
#include "Orb/TypeRegistry.h"

namespace Orb {
namespace {

// The message of the RangeError that `f` raises, or "" when it raises none.
template <class F>
std::string rangeError(F f) {
  try {
    f();
  } catch (RangeError const& e) {
    return e.what();
  }
  return "";
}

TEST(Quote, EscapesBackslashQuoteAndNonPrintableBytesInLowerCaseHex) {
  EXPECT_EQ(quote(""), R"("")");
  EXPECT_EQ(quote("plain text ~"), R"("plain text ~")");
  EXPECT_EQ(quote("a\\b\"c"), R"("a\\b\"c")");
  EXPECT_EQ(quote(std::string("\x01\n\x1f", 3)), R"("\x01\x0a\x1f")");
  EXPECT_EQ(quote("\x7f\xab\xff"), R"("\x7f\xab\xff")");
  EXPECT_EQ(quote(std::string("a\0b", 3)), R"("a\x00b")");
  EXPECT_EQ(valueToStrep(String("x\"")), R"("x\"")");
}

TEST(TextReader, QuotedStringsOfEveryByteReadBack) {
  std::string all;
  for (int c = 0; c < 256; ++c)
    all += static_cast<char>(c);
  for (std::string const& s : {std::string(), std::string("\\\\\"\""), all}) {
    std::string text = quote(s) + ",";
    TextReader r(text);
    EXPECT_EQ(r.readQuoted().str(), s);
    r.expect(",");
    EXPECT_TRUE(r.atEnd());
  }
}

TEST(TextReader, ReadsUpperCaseHexEscapesToo) {
  TextReader r(R"("\xAB\x0a")");
  EXPECT_EQ(r.readQuoted().str(), "\xab\n");
}

TEST(TextReader, MalformedQuotedStringsSayWhatWasExpected) {
  auto read = [](std::string_view text) {
    return rangeError([&] { TextReader(text).readQuoted(); });
  };
  EXPECT_EQ(read("abc"), "expected a quoted string at offset 0");
  EXPECT_EQ(read(""), "expected a quoted string at offset 0");
  EXPECT_EQ(read(R"("abc)"), "expected a closing quote at offset 0");
  EXPECT_EQ(read(R"("abc\)"), "expected a closing quote at offset 0");
  EXPECT_EQ(read(R"("\x4")"), R"(expected an escape \\, \" or \xHH at offset 1)");
  EXPECT_EQ(read(R"("a\q")"), R"(expected an escape \\, \" or \xHH at offset 2)");
  EXPECT_EQ(read(R"("\x4)"), R"(expected an escape \\, \" or \xHH at offset 1)");
}

TEST(TextReader, ReadsAComposedTextFormPieceByPiece) {
  TextReader r(R"(name="eth0" mtu=1500 off=-3 ptr=0x1f;)");
  r.expect("name=");
  EXPECT_EQ(r.readQuoted(), String("eth0"));
  EXPECT_FALSE(r.accept(" mtu=x"));
  EXPECT_TRUE(r.accept(" mtu="));
  EXPECT_EQ(r.readU32(), 1500u);
  r.expect(" off=");
  EXPECT_EQ(r.readInteger(), -3);
  EXPECT_EQ(r.readUntil("="), " ptr");
  r.expect("=");
  EXPECT_EQ(r.readPointer(), 0x1fu);
  EXPECT_EQ(rangeError([&] { r.expectEnd(); }), "expected the end of the text at offset 36");
  EXPECT_EQ(r.readUntil(","), ";");
  EXPECT_TRUE(r.atEnd());
  r.expectEnd();
}

TEST(TextReader, ExpectNamesTheMissingLiteral) {
  TextReader r("ab");
  r.expect("a");
  EXPECT_EQ(rangeError([&] { r.expect("c"); }), R"(expected "c" at offset 1)");
  EXPECT_EQ(r.position(), 1u);
}

TEST(TextReader, U32AcceptsExactlyItsRange) {
  EXPECT_EQ(TextReader("0").readU32(), 0u);
  EXPECT_EQ(TextReader("4294967295").readU32(), 4294967295u);
  auto readU32 = [](std::string_view text) {
    return rangeError([&] { TextReader(text).readU32(); });
  };
  EXPECT_EQ(readU32("4294967296"), "expected a number from 0 to 4294967295 at offset 0");
  EXPECT_EQ(readU32("-1"), "expected a number from 0 to 4294967295 at offset 0");
  EXPECT_EQ(readU32("x"), "expected a decimal number at offset 0");
  EXPECT_EQ(readU32("-"), "expected a decimal number at offset 0");
  EXPECT_EQ(readU32("123456789012345678901234567890"),
            "expected a number of at most 32 bits at offset 0");

  TextReader r("a=4294967296");
  r.expect("a=");
  EXPECT_NE(rangeError([&] { r.readU32(); }), "");
  EXPECT_EQ(r.position(), 2u);
}

TEST(TextReader, PointersRoundTripThroughTheirTextForm) {
  int x = 0;
  EXPECT_EQ(pointerToStrep(nullptr), "0x0");
  std::string text = pointerToStrep(&x);
  EXPECT_EQ(text.rfind("0x", 0), 0u);
  EXPECT_EQ(text.find_first_of("ABCDEF"), std::string::npos);
  EXPECT_EQ(TextReader(text).readPointer(), reinterpret_cast<std::uintptr_t>(&x));
  EXPECT_EQ(TextReader("0x0").readPointer(), 0u);

  auto readPointer = [](std::string_view t) {
    return rangeError([&] { TextReader(t).readPointer(); });
  };
  EXPECT_EQ(readPointer("12"), R"(expected "0x" at offset 0)");
  EXPECT_EQ(readPointer("0x"), "expected hexadecimal digits at offset 2");
  EXPECT_NE(readPointer("0x11112222333344445"), "");
}

TEST(RangeErrorTest, WithinPrefixesTheAttributeName) {
  RangeError e = RangeError("expected a decimal number at offset 0").within("mtu");
  EXPECT_STREQ(e.what(), "mtu: expected a decimal number at offset 0");
  EXPECT_STREQ(e.within("intf").what(), "intf: mtu: expected a decimal number at offset 0");
}

enum class Color : U32 { kRed = 1, kBlue = 7 };
constexpr std::array<EnumName<Color>, 2> kColorNames{
    {{Color::kRed, "red"}, {Color::kBlue, "blue"}}};

std::string colorText(Color c) {
  return enumToStrep<Color>(c, kColorNames);
}
Color colorFrom(std::string_view t) {
  return enumFromStrep<Color>(t, kColorNames, "Color");
}

TEST(EnumText, NamedValuesUseTheirNamesOthersTheirNumbers) {
  EXPECT_EQ(colorText(Color::kRed), "red");
  EXPECT_EQ(colorText(Color::kBlue), "blue");
  EXPECT_EQ(colorText(static_cast<Color>(4)), "4");
  EXPECT_EQ(colorText(static_cast<Color>(4294967295u)), "4294967295");
}

TEST(EnumText, ParsesNamesAndNumbersAndRejectsTheRest) {
  EXPECT_EQ(colorFrom("blue"), Color::kBlue);
  EXPECT_EQ(colorFrom("1"), Color::kRed);
  EXPECT_EQ(colorFrom("4"), static_cast<Color>(4));
  EXPECT_EQ(colorFrom("4294967295"), static_cast<Color>(4294967295u));
  for (char const* bad : {"green", "Red", "", "-1", "4294967296", "99999999999", "1 "}) {
    EXPECT_EQ(rangeError([&] { colorFrom(bad); }),
              std::string("Color: unknown value '") + bad + "'");
  }
}

int countedActions = 0;
TypeRegistration const zetaRegistration{TypeInfo{
    "OrbTest.Zeta",
    {{1, "mtu"}, {2, "name"}},
    {{"count", [](Object&) { ++countedActions; }}},
}};

class Target : public Object {
 public:
  int touched = 0;
};

TEST(TypeRegistryTest, StaticRegistrationIsFoundByName) {
  auto const* t = TypeRegistry::instance().type("OrbTest.Zeta");
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->attributes.size(), 2u);
  EXPECT_EQ(TypeRegistry::instance().type("OrbTest.Missing"), nullptr);
}

TEST(TypeRegistryTest, TypeNamesAreSortedAndRegisteringAgainReplaces) {
  auto& registry = TypeRegistry::instance();
  registry.typeIs(TypeInfo{"OrbTest.Alpha", {{1, "first"}}, {}});
  registry.typeIs(TypeInfo{"OrbTest.Alpha", {{1, "replaced"}}, {}});
  auto names = registry.typeNames();
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  std::vector<std::string> ours;
  std::copy_if(names.begin(), names.end(), std::back_inserter(ours),
               [](std::string const& n) { return n.rfind("OrbTest.", 0) == 0; });
  EXPECT_EQ(ours, (std::vector<std::string>{"OrbTest.Alpha", "OrbTest.Zeta"}));
  EXPECT_EQ(registry.attributeName("OrbTest.Alpha", 1), "replaced");
}

TEST(TypeRegistryTest, AttributeNamesFallBackToTheNumber) {
  auto& registry = TypeRegistry::instance();
  EXPECT_EQ(registry.attributeName("OrbTest.Zeta", 2), "name");
  EXPECT_EQ(registry.attributeName("OrbTest.Zeta", 3), "3");
  EXPECT_EQ(registry.attributeName("OrbTest.Missing", 1), "1");
}

TEST(TypeRegistryTest, DoActionRunsTheNamedActionOnTheTarget) {
  auto& registry = TypeRegistry::instance();
  registry.typeIs(TypeInfo{
      "OrbTest.Touch", {}, {{"touch", [](Object& o) { ++static_cast<Target&>(o).touched; }}}});
  Ptr<Target> target = make<Target>();
  EXPECT_TRUE(registry.doAction("OrbTest.Touch", "touch", *target));
  EXPECT_TRUE(registry.doAction("OrbTest.Touch", "touch", *target));
  EXPECT_EQ(target->touched, 2);
  EXPECT_FALSE(registry.doAction("OrbTest.Touch", "missing", *target));
  EXPECT_FALSE(registry.doAction("OrbTest.Missing", "touch", *target));
  EXPECT_EQ(target->touched, 2);

  int const before = countedActions;
  EXPECT_TRUE(registry.doAction("OrbTest.Zeta", "count", *target));
  EXPECT_EQ(countedActions, before + 1);
}

}  // namespace
}  // namespace Orb
