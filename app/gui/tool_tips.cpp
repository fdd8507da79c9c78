#include "tool_tips.h"

#include <QWidget>

namespace bw::gui {

namespace {

struct Tip {
  const char* name;
  const char* text;
};

const Tip kTips[] = {
    // device choice and description
    {"Lex", "The device files of the Device Library: click one to load the device and its protocol"},
    {"FFC", "First function code of the range that Auto Generate builds"},
    {"LFC", "Last function code of the range that Auto Generate builds"},
    {"Ot", "Auto Generate: send each code once"},
    {"RPT", "Auto Generate: send each code with its repeat"},
    {"MFG", "Manufacturer of the device: the name the outputs store it under"},
    {"Device", "Device type (TV, VCR, ...): the name the outputs store it under"},
    {"Model", "Model of the device: the name the outputs store it under"},
    {"format", "The IR protocol of the device (from the Device Library's protocol files)"},
    {"DC", "Device code the keys are generated with"},
    {"txtcertify", "Certification note of the device file"},
    {"Output", "The output to generate: Pronto IR database, Slink-e code file (Tx only or Tx/Rx) or ADI code file"},
    {"Autogen", "Generate every function code of a range instead of the device file's keys"},
    {"Check1", "Show each generated entry in the details dialog before it is written"},
    {"status", "The key a run is writing"},
    {"quit", "Close the open database and end the program"},
    // Pronto database
    {"dbname", "The open IR database"},
    {"LoadDB", "Open an IR database from \"Generated IRDBs\", or close the open one"},
    {"NewDB", "Create a new IR database from the template in \"Generated IRDBs\" and open it"},
    {"DvcMfglist", "Manufacturers in the open database"},
    {"DvcTypeList", "Device types in the open database"},
    {"DvcModelList", "Models in the open database: choosing one shows its manufacturer and type"},
    {"DBmfgDEL", "Delete the chosen manufacturer with all its devices and codes"},
    {"DBtypDEL", "Delete the chosen device type with all its devices and codes"},
    {"DBdvcDel", "Delete the chosen model and its codes"},
    {"xqtcmd", "Write every key of the loaded device into the open database as Pronto codes"},
    // Slink-e
    {"txtdescr", "Description of the code file; it also names the file in \"Slinke Library\""},
    {"txtcarrier", "Carrier of the Slink-e entries"},
    {"TxtRpt", "Repeat setting of a Tx/Rx file"},
    {"TxtOne", "Mark and space of a one bit"},
    {"TxtZero", "Mark and space of a zero bit"},
    {"TxtStart", "Start burst of a Tx/Rx file"},
    {"txtStop", "Stop burst of a Tx/Rx file"},
    {"Opttxonly", "Transmit-only entries: every key as its durations"},
    {"OptTxRx", "Transmit/receive entries: a protocol header and one bit string a key"},
    {"slinkkeyname", "The key being written"},
    {"SlinkEntryCount", "Entries written so far"},
    {"cmdSlinkXqt", "Write the loaded device as a Slink-e code file into \"Slinke Library\""},
    {"CmdSlinkDone", "End the program"},
    // ADI
    {"ADIdescr", "Device description stored in each record's name"},
    {"ADIoptTX", "Records for transmitting"},
    {"ADIoptRX", "Records for recognizing"},
    {"AdiNewKey", "The key the run waits at"},
    {"cmdADIxqt", "Generate the loaded device's keys one by one into the table"},
    {"CmdADIadd", "Add the key the run waits at to the table"},
    {"cmdADInxtKey", "Skip the key the run waits at"},
    {"cmdadiall", "Add this key and every following key without asking"},
    {"ADIFileName", "The table's file (NEW until it is saved)"},
    {"ADIRecnmb", "Number of the record shown"},
    {"ADIFileDevice", "Device part of the shown record's name"},
    {"AdiFileKey", "Key part of the shown record's name"},
    {"cmdADIOpen", "Open an ADI code file (.lir) to browse and edit"},
    {"cmdADIsave", "Save the table (a new table asks for a name in \"ADI Library\")"},
    {"cmdADIprior", "Show the record before this one"},
    {"cmdADINext", "Show the record after this one"},
    {"cmdADIrpl", "Replace the shown record with the last generated one"},
    {"cmdadiDelete", "Delete the shown record"},
    {"cmdAdiNew", "Start a new, empty table for a run to fill"},
    {"cmdADIdone", "Save a changed table, close the database and end the program"},
    // details dialog
    {"Next", "Accept this entry and go on (Enter or Alt+N)"},
    {"Skip", "Go on without this entry; only ADI leaves it out (Alt+S)"},
    {"Finish", "Stop showing entries for the rest of this run (Alt+F, Esc or closing the dialog)"},
    {"HexOPT", "Show the code text as hexadecimal words"},
    {"Option1_0", "Waveform scale: one frame across the view"},
    {"Option1_1", "Waveform scale: two frames across the view"},
    {"Option1_2", "Waveform scale: four frames across the view"},
    {"Command1", "Move the waveform along by 5 % of the view; past the end it starts again (Alt+A)"},
    {"savePicture", "Save the waveform as shown as a PNG or SVG picture (Ctrl+S)"},
    {"BurstList", "The entry's durations in microseconds: marks positive, spaces negative"},
    {"Text1", "The entry's code text as it will be written"},
};

}  // namespace

void ApplyToolTips(QWidget* root) {
  for (const Tip& tip : kTips)
    for (QWidget* w : root->findChildren<QWidget*>(QString::fromLatin1(tip.name)))
      w->setToolTip(QString::fromUtf8(tip.text));
}

}  // namespace bw::gui
