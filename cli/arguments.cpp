// Tells options from expressions.
#include "arguments.h"

#include <algorithm>

namespace qumel::cli {

namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool LooksLikeOption(std::string const& argument) {
  if (argument.size() < 2 || argument[0] != '-') return false;
  if (argument[1] != '-') return argument.size() == 2 && IsLetter(argument[1]);
  return argument.size() > 2 &&
         std::all_of(argument.begin() + 2, argument.end(), [](char c) { return IsLetter(c) || c == '-'; });
}

SQMRequest Refusal(std::string complaint) { return {SQMRequest::Kind::Refuse, {}, std::move(complaint)}; }

}  // namespace

SQMRequest ReadArguments(std::vector<std::string> const& arguments) {
  SQMRequest request;
  bool onlyExpressions = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string const& argument = arguments[i];
    if (onlyExpressions) {
      request.tasks.push_back({SQMTask::Kind::Expression, argument});
    } else if (argument == "--") {
      onlyExpressions = true;
    } else if (argument == "--help") {
      return {SQMRequest::Kind::ShowHelp, {}, {}};
    } else if (argument == "--version") {
      return {SQMRequest::Kind::ShowVersion, {}, {}};
    } else if (argument == "-f") {
      if (++i == arguments.size()) return Refusal("-f needs the name of a file");
      request.tasks.push_back({SQMTask::Kind::File, arguments[i]});
    } else if (LooksLikeOption(argument)) {
      return Refusal("unknown option " + argument + " (if it is an expression, put -- before it)");
    } else {
      request.tasks.push_back({SQMTask::Kind::Expression, argument});
    }
  }
  return request;
}

}  // namespace qumel::cli
