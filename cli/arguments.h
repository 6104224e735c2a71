// What the arguments of the command ask for.
#pragma once

#include <string>
#include <vector>

namespace qumel::cli {

/** One thing to evaluate. */
struct SQMTask {
  enum class Kind { Expression, File };
  Kind kind;
  std::string text;  // the expression, or the path of the file
};

struct SQMRequest {
  enum class Kind { Evaluate, ShowHelp, ShowVersion, Refuse };
  Kind kind = Kind::Evaluate;
  std::vector<SQMTask> tasks;  // none: lines from standard input
  std::string complaint;       // why the arguments are refused
};

/** Reads the arguments, the command's own name left out. What begins with "-" is an option where it is one or
 *  looks like a misspelt one: a letter behind one dash, or letters and dashes behind two. Anything else, such
 *  as -2^2 or -sin(30), is an expression; behind "--" everything is. */
SQMRequest ReadArguments(std::vector<std::string> const& arguments);

}  // namespace qumel::cli
