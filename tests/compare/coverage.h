// What the programs of a comparison reach: how many run without an error, and how often each operator does.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace qumel::compare {

class Coverage {
 public:
  void Add(std::string const& record);
  void Print() const;

 private:
  struct Count {
    std::uint64_t programs = 0, succeeded = 0;
  };

  std::map<std::string, Count> m_operators;  // by id and token
  std::map<std::string, Count> m_ways;       // by label
  std::map<std::string, std::uint64_t> m_codes;
  std::uint64_t m_programs = 0, m_mistaken = 0, m_shared = 0;
};

}  // namespace qumel::compare
