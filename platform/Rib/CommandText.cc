// Writing and strictly reading the canonical command lines.
#include "Rib/CommandText.h"

#include <ostream>
#include <type_traits>

#include "Orb/Text.h"

namespace Rib {

RecordedCommand RecordedCommand::of(CogOp const& op) {
  RecordedCommand r;
  r.name = Orb::String(op.name());
  if (op.path()) r.path = op.path()->elements();
  if (op.values) r.values = op.values->values();
  r.isDelete = op.isDelete;
  return r;
}

RecordedCommand RecordedCommand::of(CommitKind kind) {
  RecordedCommand r;
  r.kind = kind == CommitKind::transaction ? Kind::commit : Kind::syncCommit;
  return r;
}

namespace {

void appendNumber(std::string& out, Orb::U32 v) {
  out += std::to_string(v);
}

void appendPathElement(std::string& out, PathElement const& e) {
  appendNumber(out, e.tag);
  switch (e.kind) {
    case PathElement::Kind::pathId:
      break;
    case PathElement::Kind::u32Key:
      out += '=';
      appendNumber(out, e.number);
      break;
    case PathElement::Kind::stringKey:
      out += '=';
      out += Orb::quote(e.text.view());
      break;
  }
}

void appendValue(std::string& out, TaggedValue const& v) {
  appendNumber(out, v.tag);
  std::visit(
      [&out](auto const& data) {
        using T = std::decay_t<decltype(data)>;
        if constexpr (std::is_same_v<T, Orb::U32>) {
          out += ":u32=";
          appendNumber(out, data);
        } else if constexpr (std::is_same_v<T, Orb::U8>) {
          out += ":u8=";
          appendNumber(out, data);
        } else if constexpr (std::is_same_v<T, bool>) {
          out += data ? ":flag=true" : ":flag=false";
        } else if constexpr (std::is_same_v<T, Orb::String>) {
          out += ":str=";
          out += Orb::quote(data.view());
        } else if constexpr (std::is_same_v<T, Kiwi::IpAddr>) {
          out += ":ip=";
          out += data.stringValue();
        } else if constexpr (std::is_same_v<T, Kiwi::Ip6Addr>) {
          out += ":ip6=";
          out += data.stringValue();
        } else if constexpr (std::is_same_v<T, U32s>) {
          out += ":u32s=[";
          for (std::size_t i = 0; i < data.size(); ++i) {
            if (i) out += ',';
            appendNumber(out, data[i]);
          }
          out += ']';
        } else {
          static_assert(std::is_same_v<T, Reset>);
          out += ":reset";
        }
      },
      v.data);
}

// Reads one line. Besides the grammar it checks that every piece is spelled
// the way commandLine spells it, so two different lines never mean the same
// stream and golden files cannot drift into a second spelling.
class LineReader {
 public:
  explicit LineReader(std::string_view line) : line_(line), in_(line) {}

  RecordedCommand read() {
    RecordedCommand r;
    std::string_view name = in_.readUntil(" ");
    if (name.empty()) fail("a command name", 0);
    if (name == "commit") {
      if (in_.atEnd()) return RecordedCommand::of(CommitKind::transaction);
      if (in_.accept(" sync")) {
        in_.expectEnd();
        return RecordedCommand::of(CommitKind::synchronous);
      }
    }
    r.name = Orb::String(name);
    readPath(r.path);
    while (!in_.atEnd()) {
      if (in_.accept(" delete")) {
        in_.expectEnd();
        r.isDelete = true;
        break;
      }
      if (!in_.accept(" ")) fail("\" \" before a value, \" delete\" or the end of the line");
      r.values.push_back(readValue());
    }
    return r;
  }

 private:
  [[noreturn]] void fail(std::string const& expected, std::size_t at) const {
    throw Orb::RangeError("expected " + expected + " at offset " + std::to_string(at));
  }
  [[noreturn]] void fail(std::string const& expected) const { fail(expected, in_.position()); }

  void expectCanonical(std::size_t start, std::string const& canonical) const {
    if (line_.substr(start, in_.position() - start) != canonical) {
      fail("the canonical text " + canonical, start);
    }
  }

  char peek() const { return in_.atEnd() ? '\0' : line_[in_.position()]; }

  Orb::U32 readNumber() {
    std::size_t start = in_.position();
    Orb::U32 v = in_.readU32();
    expectCanonical(start, std::to_string(v));
    return v;
  }

  Orb::String readQuoted() {
    std::size_t start = in_.position();
    Orb::String s = in_.readQuoted();
    expectCanonical(start, Orb::quote(s.view()));
    return s;
  }

  template <class Addr>
  Addr readAddress(char const* what) {
    std::size_t start = in_.position();
    std::string_view text = in_.readUntil(" ");
    Addr a;
    try {
      a = Addr::fromString(text);
    } catch (Orb::RangeError const&) {
      fail(what, start);
    }
    expectCanonical(start, a.stringValue());
    return a;
  }

  void readPath(std::vector<PathElement>& path) {
    in_.expect(" [");
    if (in_.accept("]")) return;
    for (;;) {
      PathElement e{PathElement::Kind::pathId, readNumber(), 0, {}};
      if (in_.accept("=")) {
        if (peek() == '"') {
          e.kind = PathElement::Kind::stringKey;
          e.text = readQuoted();
        } else {
          e.kind = PathElement::Kind::u32Key;
          e.number = readNumber();
        }
      }
      path.push_back(std::move(e));
      if (in_.accept("]")) return;
      if (!in_.accept(" ")) fail("\" \" or \"]\" after a path element");
    }
  }

  TaggedValue readValue() {
    TaggedValue v{.tag = readNumber(), .data = Reset{}};
    in_.expect(":");
    if (in_.accept("reset")) {
      // data is already Reset
    } else if (in_.accept("u32=")) {
      v.data = readNumber();
    } else if (in_.accept("u8=")) {
      std::size_t start = in_.position();
      Orb::U32 n = readNumber();
      if (n > 0xff) fail("a number from 0 to 255", start);
      v.data = static_cast<Orb::U8>(n);
    } else if (in_.accept("flag=")) {
      if (in_.accept("true")) {
        v.data = true;
      } else if (in_.accept("false")) {
        v.data = false;
      } else {
        fail("true or false");
      }
    } else if (in_.accept("str=")) {
      v.data = readQuoted();
    } else if (in_.accept("ip=")) {
      v.data = readAddress<Kiwi::IpAddr>("an IPv4 address");
    } else if (in_.accept("ip6=")) {
      v.data = readAddress<Kiwi::Ip6Addr>("an IPv6 address");
    } else if (in_.accept("u32s=")) {
      v.data = readNumbers();
    } else {
      fail("a value kind (reset, u32, u8, flag, str, ip, ip6 or u32s)");
    }
    return v;
  }

  U32s readNumbers() {
    U32s numbers;
    in_.expect("[");
    if (in_.accept("]")) return numbers;
    for (;;) {
      numbers.push_back(readNumber());
      if (in_.accept("]")) return numbers;
      if (!in_.accept(",")) fail("\",\" or \"]\" in a number list");
    }
  }

  std::string_view line_;
  Orb::TextReader in_;
};

}  // namespace

std::string commandLine(RecordedCommand const& record) {
  switch (record.kind) {
    case RecordedCommand::Kind::commit:
      return "commit";
    case RecordedCommand::Kind::syncCommit:
      return "commit sync";
    case RecordedCommand::Kind::command:
      break;
  }
  std::string out = record.name.str();
  out += " [";
  for (std::size_t i = 0; i < record.path.size(); ++i) {
    if (i) out += ' ';
    appendPathElement(out, record.path[i]);
  }
  out += ']';
  for (TaggedValue const& v : record.values) {
    out += ' ';
    appendValue(out, v);
  }
  if (record.isDelete) out += " delete";
  return out;
}

std::string valueText(TaggedValue const& value) {
  std::string out;
  appendValue(out, value);
  return out;
}

RecordedCommand parseCommandLine(std::string_view line) {
  return LineReader(line).read();
}

std::vector<RecordedCommand> parseCommandText(std::string_view text) {
  std::vector<RecordedCommand> records;
  std::size_t lineNumber = 0;
  while (!text.empty()) {
    ++lineNumber;
    std::size_t end = text.find('\n');
    std::string prefix = "line " + std::to_string(lineNumber);
    if (end == std::string_view::npos) {
      throw Orb::RangeError(prefix + ": expected a line end after the last line");
    }
    try {
      records.push_back(parseCommandLine(text.substr(0, end)));
    } catch (Orb::RangeError const& e) {
      throw e.within(prefix);
    }
    text.remove_prefix(end + 1);
  }
  return records;
}

std::ostream& operator<<(std::ostream& os, RecordedCommand const& record) {
  return os << commandLine(record);
}

}  // namespace Rib
