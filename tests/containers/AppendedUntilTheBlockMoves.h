#pragma once

/// How many cells can be appended to a vector, of numbers of any kind, before its block moves; it is full of them
/// afterwards.
template <class V>
int AppendedUntilTheBlockMoves(V* v) {
  const auto* block = v->begin();
  for (int appended = 0;; ++appended) {
    v->push_back(1);
    if (v->begin() != block) return appended;
  }
}
