#include "input/key_types.h"

#include "runtime/run_time_error.h"

namespace bw {

KeyEntry& KeyTable::operator[](int index) {
  if (index < 0 || index > UpperBound()) ThrowSubscriptOutOfRange();
  return entries[static_cast<std::size_t>(index)];
}

const KeyEntry& KeyTable::operator[](int index) const {
  if (index < 0 || index > UpperBound()) ThrowSubscriptOutOfRange();
  return entries[static_cast<std::size_t>(index)];
}

}  // namespace bw
