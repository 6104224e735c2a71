// A private context, current while the object lives, for what measures Qumel alone.
#pragma once

#include <atomic>
#include <stdexcept>
#include <string>

#include "qumel/qumel.h"

namespace bench {

/** A wrong answer is never a fast one: throws what the library reports. */
inline void ThrowLastError(std::string const& what) {
  if (qmGetLastErrorID() != 0) throw std::runtime_error(what + ": " + qmGetLastErrorText());
}

class QumelContext {
 public:
  QumelContext() : m_previous(qmGetCurrentContextName()) {
    static std::atomic<unsigned> made = 0;
    m_name = "bench" + std::to_string(++made);
    qmCreatePrivateContext(m_name.c_str());
    qmSetContext(m_name.c_str(), false);
    qmSetAngleUnit('R');
  }
  ~QumelContext() {
    qmDestroyPrivateContext(m_name.c_str());
    qmSetContext(m_previous.c_str(), false);
  }
  QumelContext(QumelContext const&) = delete;
  QumelContext& operator=(QumelContext const&) = delete;

 private:
  std::string m_previous, m_name;
};

}  // namespace bench
