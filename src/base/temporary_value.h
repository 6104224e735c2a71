// A value that stands in a place for as long as a scope lasts.
#pragma once

#include <utility>

namespace qumel {

template <class Value>
class CQMTemporaryValue {
 public:
  CQMTemporaryValue(Value& place, Value value) : m_place(place), m_before(std::exchange(place, value)) {}
  ~CQMTemporaryValue() { m_place = m_before; }
  CQMTemporaryValue(CQMTemporaryValue const&) = delete;
  CQMTemporaryValue& operator=(CQMTemporaryValue const&) = delete;

 private:
  Value& m_place;
  Value m_before;
};

}  // namespace qumel
