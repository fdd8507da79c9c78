// The table through which the key generator reaches the per-key writers. The
// shell is the one module that knows both sides, so the generator depends on no
// writer and the writers may call the generator.
#include "adi/adi.h"
#include "pronto/pronto_code.h"
#include "shell/program.h"
#include "slinke/slinke.h"

namespace bw {

EntryWriters StandardEntryWriters() {
  EntryWriters writers;
  writers.SlinkTxOnly = [](Program& p, int key, int32_t) { WriteSlinkRawEntry(p, key, p.Keys[key].Label); };
  writers.ADI = WriteADIEntry;
  writers.Pronto = ProntoWriteEntry;
  return writers;
}

}  // namespace bw
