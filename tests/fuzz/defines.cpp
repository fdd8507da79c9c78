// The symbol-table harness: the input is protocol text, read line by line as a
// protocol file is ("KEYWORD = value" or "KEYWORD value"), except that DEFINE
// may replace a name and "CODES = d f" sets the key's device and function
// codes. Every name is then evaluated both ways and both forms are expanded
// (the repeat form twice) and merged. A RunTimeError is the program's answer
// to a bad expression and is fine; anything else escaping, a sanitizer report
// or a hang is a finding.
#include <cstdint>
#include <string>
#include <string_view>

#include "input/defines.h"
#include "input/equation.h"
#include "input/subroutines.h"
#include "protocol/protocol.h"
#include "runtime/numbers.h"
#include "runtime/text.h"
#include "text_host.h"

namespace {

template <typename Step>
void Try(Step&& step) {
  try {
    step();
  } catch (const bw::RunTimeError&) {
    // the command that met it ends; the next one still runs
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace bw;
  fuzz::TextHost host;
  Program p;
  host.program = &p;
  p.host = &host;
  p.CurrentDeviceCode = 0x5A;
  p.CurrentFunctionCode = 0x33;
  ProtocolScratch scratch;
  ResetProtocol(p, scratch);

  std::string_view text(reinterpret_cast<const char*>(data), size);
  while (!text.empty()) {
    std::size_t end = text.find('\n');
    std::string line(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (Trim(line).empty()) continue;
    Try([&] {
      for (std::string_view separator : {"=", " "}) {
        std::string value = line;
        std::string keyword = RemoveBlanks(GetToken(value, separator));
        if (keyword == "DEFINE") {
          DefineSymbol(p, value, true);
        } else if (keyword == "CODES") {
          p.CurrentDeviceCode = CLng(Val(GetToken(value)));
          p.CurrentFunctionCode = CLng(Val(value));
        } else if (!ParseProtocolLine(p, keyword, value, scratch)) {
          continue;
        }
        return;
      }
    });
  }
  Try([&] { ScaleProtocolTimes(p, scratch); });
  Try([&] { CompileProtocolForm(p); });

  for (int i = 1; i <= p.Defines.UpperBound(); ++i) {
    const std::string name = p.Defines[i].Name;
    Try([&] { ClassifyDefine(p, i); });
    Try([&] { EvaluateDefine(p, i, name, false); });
    Try([&] { EvaluateDefine(p, i, name, true); });
  }
  DurationList out;
  Try([&] { ExpandForm(p, p.Protocol.FormOnce, out, 1); });
  Try([&] { MergeSameSign(out); });
  Try([&] { ExpandForm(p, p.Protocol.FormRepeat, out, 2); });
  Try([&] { MergeSameSign(out); });
  return 0;
}
