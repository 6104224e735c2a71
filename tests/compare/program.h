// What is run through both libraries: a text with the settings it is written for, and what the host does
// before its runs and between them. Everything is made of parts that can be left out one by one.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "compare/host.h"

namespace qumel::compare {

/** Settings of a context, as letters of the interface. */
struct Settings {
  char radixMark = 'P', quoteMark = '2', booleanTrue = 'C', angleUnit = 'D', outputBase = 'D';
  char coordinateFormat = 'R', defaultScope = 'L';
  int precision = 12;
  bool allowsImpliedMultiplication = true, invertsIndices = false, allowsComplex = false,
       forcesComplex = false;
  bool isPrivate = false;  // a private context takes over all settings, a public one not all

  std::string Shown() const;
};

/** A token of a text. A fixed one bounds a loop, a size or a count, so that mutation leaves it alone. */
struct Piece {
  std::string text;
  bool isFixed = false;
};
using Pieces = std::vector<Piece>;

/** The pieces as one text, with a space where two of them would be read as one token. */
std::string Join(Pieces const& pieces);

/** A call of the host. Do returns what can be observed of it. */
struct Act {
  std::string shown;
  std::function<std::string(Host&)> Do;
};
using Acts = std::vector<Act>;

struct Program {
  static constexpr std::size_t kRuns = 5;  // of each kind, as text and by handle

  Settings settings;
  bool startsByHandle = false;
  bool isMutated = false;
  Acts preparations;
  Acts changes[kRuns];  // before each run; the first list stays empty
  Pieces pieces;
  std::set<std::string> names;  // that the host uses

  /** Lines that tell a reader all of it. */
  std::string Shown() const;
  std::size_t PartCount() const;
  /** Leaves out the parts with these numbers, which count preparations, changes and pieces in this order. */
  void Drop(std::set<std::size_t> const& parts);
};

}  // namespace qumel::compare
