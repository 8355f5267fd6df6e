#pragma once

#include <functional>

#include "kalmia/support/WorkMeter.h"

namespace kalmia {

/// How many threads long work is given: 1 where threading is off; else the processors that ThreadingControl was told
/// of, but no more than 64, or than the machine has if these are more.
int ThreadsForLongWork();

/// Calls work(piece, ask) for the pieces 0, 1, ..., pieces - 1, on up to `threads` threads, the calling one among them;
/// each takes the next piece when it is done with one. Where a thread cannot be had the others do its share.
///
/// Whoever works calls ask() as often as the user is to be asked. Questions are put by the calling thread alone, by the
/// function given, between its own steps and while it waits for the others: as many as were wanted in all, whatever the
/// number of threads. What the function or a piece throws ends the work: other threads leave their pieces at their next
/// question. It is thrown again when all have ended.
void ForPieces(int pieces, int threads, const Ask& ask, const std::function<void(int piece, const Ask& ask)>& work);

}  // namespace kalmia
