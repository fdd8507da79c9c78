// The form model: the main window F and the details dialog DBG described as
// plain structs of named controls. Event handlers in the core read and write
// these; a front end (Qt window, scripted test host, CLI) shows them and copies
// user input into them before it calls a handler. Member names are the
// controls' own names.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace bw {

struct TextBox {
  std::string text;
  bool visible = true;
  bool enabled = true;
};

struct Label {
  std::string caption;
  bool visible = true;
};

struct CheckBox {
  std::string caption;
  int value = 0;  ///< 0 unchecked, 1 checked
  bool visible = true;
  bool enabled = true;
};

struct OptionButton {
  std::string caption;
  bool value = false;
  bool visible = true;
  bool enabled = true;
};

struct Button {
  std::string caption;
  bool visible = true;
  bool enabled = true;
};

struct Frame {
  std::string caption;
  bool visible = true;
  int left = 0;  ///< twips, kept only so that overlapping frames can be checked
};

struct Timer {
  bool enabled = false;
};

/// A list box: entries in insertion order and a selection (-1 = none).
struct ListBox {
  std::vector<std::string> items;
  int listIndex = -1;
  bool visible = true;
  bool enabled = true;

  void Clear() {
    items.clear();
    listIndex = -1;
  }
  /// Appends, or inserts at `index` when it is given.
  void AddItem(const std::string& item, int index = -1) {
    if (index < 0 || index > static_cast<int>(items.size())) items.push_back(item);
    else items.insert(items.begin() + index, item);
  }
  /// Text of the selected entry ("" when none).
  std::string Text() const {
    return (listIndex >= 0 && listIndex < static_cast<int>(items.size())) ? items[static_cast<std::size_t>(listIndex)]
                                                                           : std::string();
  }
};

/// A combo box: a list plus its own editable text. Selecting an entry copies it
/// into the text; Clear empties both.
struct ComboBox {
  /// The entries. Change them through Clear and AddItem: FindFirst keeps a map
  /// of them that only those (or a new size or storage of the list) drop.
  std::vector<std::string> items;
  int listIndex = -1;
  std::string text;
  bool visible = true;
  bool enabled = true;

  void Clear() {
    items.clear();
    listIndex = -1;
    text.clear();
    ++revision_;
  }
  void AddItem(const std::string& item, int index = -1) {
    if (index < 0 || index > static_cast<int>(items.size())) items.push_back(item);
    else items.insert(items.begin() + index, item);
    ++revision_;
  }
  /// The index of the first entry whose keyOf(entry) is `key`; -1 when none. The
  /// same answer as testing every entry in order, at the cost of one lookup
  /// while the list stays as it is.
  int FindFirst(const std::string& key, std::string (*keyOf)(std::string_view)) {
    if (kept_.keyOf != keyOf || kept_.revision != revision_ || kept_.size != items.size() ||
        kept_.data != items.data())
      KeepKeys(keyOf);
    auto it = kept_.first.find(key);
    if (it == kept_.first.end()) return -1;
    return it->second;
  }
  /// Selects entry `index` (-1 clears the selection and leaves the text).
  void Select(int index) {
    if (index >= 0 && index < static_cast<int>(items.size())) {
      listIndex = index;
      text = items[static_cast<std::size_t>(index)];
    } else {
      listIndex = -1;
    }
  }

 private:
  void KeepKeys(std::string (*keyOf)(std::string_view)) {
    kept_ = {keyOf, revision_, items.size(), items.data(), {}};
    for (std::size_t i = 0; i < items.size(); ++i) kept_.first.emplace(keyOf(items[i]), static_cast<int>(i));
  }

  uint64_t revision_ = 0;
  /// Key -> first entry with that key, for the list as it was when taken.
  struct KeptKeys {
    std::string (*keyOf)(std::string_view) = nullptr;
    uint64_t revision = 0;
    std::size_t size = 0;
    const std::string* data = nullptr;
    std::unordered_map<std::string, int> first;
  } kept_;
};

/// The main window F.
struct MainForm {
  std::string caption;
  int width = 0, height = 6600, top = 0, left = 0;  ///< twips
  bool visible = false;

  // device selection and identification
  Label Label5;
  ListBox Lex;
  ListBox Output;
  ComboBox format;
  CheckBox Autogen{"Auto Generate"};
  CheckBox Check1{"Show Details"};
  TextBox MFG, Device, Model, DC, FFC, LFC;
  TextBox txtcertify;
  TextBox status;
  Frame Frame2{"Auto Generate Range"}, Frame4{"Repeat Option"};
  OptionButton Ot{"Once"}, RPT{"Repeat"};
  Timer Timer1;
  Button quit{"Quit"};

  // Pronto database frame
  Frame DBI{"Philips Pronto IR Database"};
  TextBox dbname;
  Label dbnlbl{"Database"};
  Button LoadDB{"Open"}, NewDB{"New"}, xqtcmd{"Process"};
  Button DBmfgDEL{"Delete"}, DBtypDEL{"Delete"}, DBdvcDel{"Delete"};
  ComboBox DvcMfglist, DvcTypeList, DvcModelList;

  // Slink-e frame
  Frame Slnk{"Nirvis Slink-e  File Options"};
  TextBox txtcarrier, TxtRpt, TxtZero, TxtOne, TxtStart, txtStop;
  TextBox slinkkeyname, SlinkEntryCount, txtdescr;
  OptionButton Opttxonly{"Tx Only"}, OptTxRx{"Tx/Rx"};
  Button cmdSlinkXqt{"Process"}, CmdSlinkDone{"Done"};

  // ADI frame
  Frame ADI{"ADI Leopard & Ocelot"};
  Button cmdADIxqt{"Start Processing"}, cmdadiall{"All Keys"}, CmdADIadd{"Add"}, cmdADInxtKey{"Next Key "};
  TextBox AdiNewKey, ADIdescr;
  OptionButton ADIoptTX{"Transmit", true}, ADIoptRX{"Recognize"};
  Frame Frame3{"ADI File Data"};
  TextBox ADIFileName, ADIRecnmb, ADIFileDevice, AdiFileKey;
  Label adiFsize;
  Button cmdADIOpen{"Open "}, cmdADIsave{"Save"}, cmdADIprior{"Prior"}, cmdADINext{"Next"}, cmdADIrpl{"RPL"},
      cmdadiDelete{"Del"}, cmdAdiNew{"New"}, cmdADIdone{"Done"};
};

/// The details dialog DBG, "IR Database Entry Details".
struct DetailsForm {
  std::string caption = "IR Database Entry Details";
  bool loaded = false;   ///< created on first use, kept afterwards
  bool visible = false;

  Button Next{"Next"}, Skip{"Skip"}, Finish{"Finish"};
  CheckBox HexOPT{"HEX Display"};
  /// Horizontal scale of the waveform; exactly one is selected.
  std::array<OptionButton, 3> Option1{OptionButton{"x1", true}, OptionButton{"x1/2"}, OptionButton{"x1/4"}};
  Button Command1{"Adjust Suffix Display"};
  ListBox BurstList;
  TextBox Text1;

  // shown values (captions of the value labels)
  Label lblManufacturer, lblType, lblModel, lblTitle, lblDeviceCode, lblFunctionCode, lblCarrier{"40,000 HZ"},
      lblOnceCount, lblRepeatCount, lblKeyLabel, lblProtocol, lblBurstPairCount;

  /// Entries shown in the current run; reset by the key generator.
  int entryCounter = 0;
};

}  // namespace bw
