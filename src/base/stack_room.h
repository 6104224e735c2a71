// How much is left of the calling thread's stack: hosts may call on threads with small ones.
#pragma once

namespace qumel {

/** Whether too little is left to nest deeper. False where the bounds of the stack are not known, as on a
 * stack that the host made itself. */
bool IsStackLow();

}  // namespace qumel
