// Text forms: quoting, piecewise reading with errors that say what was
// expected, enumeration names and the type registry.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "Orb/EnumText.h"
#include "Orb/Text.h"
#include "Orb/Trace.h"
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
  EXPECT_EQ(quote(std::string("a\\b\"c ~\0\n\x7f\xff", 11)), R"("a\\b\"c ~\x00\x0a\x7f\xff")");
  EXPECT_EQ(valueToStrep(String()), R"("")");
}

TEST(TextReader, QuotedStringsOfEveryByteReadBack) {
  std::string all;
  for (int c = 0; c < 256; ++c)
    all += static_cast<char>(c);
  for (std::string const& s : {std::string(), std::string("\\\\\"\""), all}) {
    std::string text = quote(s) + ",";
    TextReader r(text);
    EXPECT_EQ(r.readQuoted().str(), s);
    EXPECT_EQ(r.position(), text.size() - 1);
  }
  EXPECT_EQ(TextReader(R"("\xAB\x0a")").readQuoted().str(), "\xab\n");
}

TEST(TextReader, MalformedQuotedStringsAreRangeErrors) {
  auto read = [](std::string_view text) {
    return rangeError([&] { TextReader(text).readQuoted(); });
  };
  EXPECT_EQ(read("abc"), "expected a quoted string at offset 0");
  // A trailing backslash used to read past the end of the text.
  EXPECT_EQ(read(R"("abc\)"), "expected a closing quote at offset 0");
  EXPECT_EQ(read(R"("a\q")"), R"(expected an escape \\, \" or \xHH at offset 2)");
  for (char const* bad : {"", R"("abc)", R"("\x4")", R"("\x4)", R"("\xg0")"})
    EXPECT_NE(read(bad), "") << bad;
}

TEST(TextReader, FailedExpectNamesTheLiteralAndConsumesNothing) {
  TextReader r("a=-3");
  EXPECT_EQ(rangeError([&] { r.expect("a=x"); }), R"(expected "a=x" at offset 0)");
  EXPECT_FALSE(r.accept("a=x"));
  r.expect("a=");
  EXPECT_EQ(r.readInteger(), -3);
  r.expectEnd();
}

TEST(TextReader, U32AcceptsExactlyItsRangeAndFailsWithoutConsuming) {
  EXPECT_EQ(TextReader("0").readU32(), 0u);
  EXPECT_EQ(TextReader("4294967295").readU32(), 4294967295u);
  EXPECT_EQ(rangeError([] { TextReader("4294967296").readU32(); }),
            "expected a number from 0 to 4294967295 at offset 0");
  for (char const* bad : {"4294967296", "-1", "x", "-", "18446744073709551616"}) {
    std::string text = std::string("a=") + bad;
    TextReader r(text);
    r.expect("a=");
    EXPECT_NE(rangeError([&] { r.readU32(); }), "") << bad;
    EXPECT_EQ(r.position(), 2u) << bad;
  }
}

TEST(TextReader, PointersRoundTripThroughTheirTextForm) {
  int x = 0;
  EXPECT_EQ(pointerToStrep(nullptr), "0x0");
  std::string text = pointerToStrep(&x);
  EXPECT_EQ(text.find_first_of("ABCDEF"), std::string::npos) << text;
  EXPECT_EQ(TextReader(text).readPointer(), reinterpret_cast<std::uintptr_t>(&x));
  for (char const* bad : {"12", "0x", "0x11112222333344445"})
    EXPECT_NE(rangeError([&] { TextReader(bad).readPointer(); }), "") << bad;
}

TEST(RangeErrorTest, WithinPrefixesTheAttributeNameAtEachLevel) {
  EXPECT_STREQ(RangeError("bad").within("mtu").within("intf").what(), "intf: mtu: bad");
}

enum class Color : U32 { kRed = 1, kBlue = 7 };
constexpr std::array<EnumName<Color>, 2> kColorNames{
    {{Color::kRed, "red"}, {Color::kBlue, "blue"}}};

TEST(EnumText, NamesWhereKnownNumbersOtherwiseAndNothingElse) {
  auto from = [](std::string_view t) { return enumFromStrep<Color>(t, kColorNames, "Color"); };
  EXPECT_EQ(enumToStrep<Color>(Color::kBlue, kColorNames), "blue");
  EXPECT_EQ(enumToStrep<Color>(static_cast<Color>(4294967295u), kColorNames), "4294967295");
  EXPECT_EQ(from("blue"), Color::kBlue);
  EXPECT_EQ(from("1"), Color::kRed);
  EXPECT_EQ(from("4294967295"), static_cast<Color>(4294967295u));
  EXPECT_EQ(rangeError([&] { from("green"); }), "Color: unknown value 'green'");
  for (char const* bad : {"Red", "", "-1", "4294967296", "99999999999", "1 "})
    EXPECT_NE(rangeError([&] { from(bad); }), "") << bad;
}

struct Target : Object {
  int touched = 0;
};
struct Bystander : Object {};

TypeRegistration const touchRegistration{TypeInfo{
    "OrbTest.Touch",
    {{1, "mtu"}},
    {{"touch", [](Object& o) { ++static_cast<Target&>(o).touched; }}},
}
                                             .objectsOf<Target>()};

int unchecked = 0;
TypeRegistration const uncheckedRegistration{
    TypeInfo{"OrbTest.Unchecked", {}, {{"count", [](Object&) { ++unchecked; }}}}};

TEST(TypeRegistryTest, FindsRegisteredTypesTheirAttributeNamesAndActions) {
  auto& registry = TypeRegistry::instance();
  EXPECT_EQ(registry.attributeName("OrbTest.Touch", 1), "mtu");
  EXPECT_EQ(registry.attributeName("OrbTest.Touch", 3), "3");
  EXPECT_EQ(registry.attributeName("OrbTest.Missing", 1), "1");
  registry.typeIs(TypeInfo{"OrbTest.Alpha", {{1, "first"}}, {}});
  registry.typeIs(TypeInfo{"OrbTest.Alpha", {{1, "replaced"}}, {}});
  EXPECT_EQ(registry.attributeName("OrbTest.Alpha", 1), "replaced");

  Ptr<Target> target = make<Target>();
  EXPECT_TRUE(registry.doAction("OrbTest.Touch", "touch", *target));
  EXPECT_FALSE(registry.doAction("OrbTest.Touch", "missing", *target));
  EXPECT_FALSE(registry.doAction("OrbTest.Missing", "touch", *target));
  EXPECT_EQ(target->touched, 1);
}

TEST(TypeRegistryTest, ActionOnAnObjectOfAnotherTypeIsRefusedAndTraced) {
  struct : TraceSink {
    void traceLine(int level, std::string_view, int, std::string_view text) override {
      lines += std::to_string(level) + " " + std::string(text) + "\n";
    }
    std::string lines;
  } sink;
  TraceSink* previous = traceSinkIs(&sink);
  auto& registry = TypeRegistry::instance();
  Ptr<Bystander> bystander = make<Bystander>();
  EXPECT_FALSE(registry.doAction("OrbTest.Touch", "touch", *bystander));
  EXPECT_FALSE(registry.doAction("OrbTest.Unchecked", "count", *bystander))
      << "a type that cannot check its objects runs no action";
  EXPECT_EQ(unchecked, 0);
  traceSinkIs(previous);
  EXPECT_EQ(
      sink.lines,
      "0 Error: action touch of OrbTest.Touch refused: the object is of another type\n"
      "0 Error: action count of OrbTest.Unchecked refused: the type cannot check its objects\n");
}

}  // namespace
}  // namespace Orb
