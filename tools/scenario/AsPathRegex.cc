// Compiles an AS-path expression under the two dialects that stand for the
// regular-expression modes.
#include "AsPathRegex.h"

#include <regex.h>

#include <regex>

namespace Scenario {

namespace {

bool compilesAsPosixExtended(std::string const& expression) {
  regex_t compiled;
  if (regcomp(&compiled, expression.c_str(), REG_EXTENDED | REG_NOSUB) != 0) return false;
  regfree(&compiled);
  return true;
}

bool compilesAsEcmaScript(std::string const& expression) {
  try {
    std::regex compiled(expression, std::regex::ECMAScript);
    return true;
  } catch (std::regex_error const&) {
    return false;
  }
}

}  // namespace

RegexValidity regexValidity(std::string const& expression) {
  return {compilesAsPosixExtended(expression), compilesAsEcmaScript(expression)};
}

}  // namespace Scenario
