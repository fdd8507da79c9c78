// The LIRC importer: every remote of a lircd.conf file becomes one protocol
// file and one device file of our own dialect, from which every key generates
// the durations LIRC sends for one press of it, in every output format that
// can hold them. A remote that cannot be sent that way is refused with the
// reason; the other remotes of the file go on. Before a remote's files are
// written into the library they are loaded and every key is generated once,
// so a remote is only ever imported exactly or not at all.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "lirc/lircd_conf.h"

namespace bw::lirc {

/// What an import may do.
struct ImportOptions {
  /// Only the remotes of this name (ignoring case); empty: every remote.
  std::string remote;
  /// Replace device and protocol files that exist already.
  bool overwrite = false;
};

/// The outcome for one remote (or for a file that gave none).
struct ImportResult {
  /// The lircd.conf file as given.
  std::string file;
  /// The remote's name as written; empty when the file gave no remote.
  std::string remote;
  /// The name the device list shows (upper case); empty when refused.
  std::string device;
  int keys = 0;
  /// Why it was not imported; empty when it was.
  std::string reason;
  bool Imported() const { return reason.empty(); }
  /// The line a user sees: "FILE: REMOTE -> DEVICE, N keys" or "FILE: REMOTE not imported: REASON".
  std::string Line() const;
};

/// The texts of one remote's two files, with the names they go under.
struct DialectFiles {
  /// File name without extension; the device list shows it upper-cased.
  std::string stem;
  /// The protocol's name as its PROTOCOL line gives it.
  std::string protocolName;
  std::string protocolText;
  std::string deviceText;
  int keys = 0;
};

// ---- importing ----

/// Imports every remote of every file into `folder` (which must exist). Remotes
/// of one name in one run get the numbers 2, 3, ... behind it.
std::vector<ImportResult> ImportLircFiles(const std::vector<std::string>& paths, const std::filesystem::path& folder,
                                          const ImportOptions& options = {});

// ---- the pieces ----

/// The two files of `remote` (read from `sourceFile`, whose folder names the
/// manufacturer) as a protocol of its own: header, pre_data and the other
/// fixed parts in the form, each key's code as its device and function codes.
/// With `heldFrames`, what a held key sends goes into the repeated part even
/// where it differs from the first frame. Nothing when its bits cannot be
/// written that way (XMP, zero-length halves, RC6 long bits inside the key
/// code, codes of more than 62 bits).
std::optional<DialectFiles> WriteFieldFiles(const LircRemote& remote, const std::string& sourceFile,
                                            bool heldFrames = true, const std::string& stem = {});
/// The two files of `remote` with every key's durations written out in its key
/// line; for raw remotes and whatever the fields cannot send exactly.
DialectFiles WriteRawFiles(const LircRemote& remote, const std::string& sourceFile, const std::string& stem = {});

/// Loads the two files from a scratch library and generates every key for the
/// Pronto and the Slink-e outputs; empty when each equals `FirstFrame`, else
/// what differs.
std::string VerifyDialectFiles(const LircRemote& remote, const DialectFiles& files);

/// A key name as the label a key line can carry: without "'" (it starts a
/// comment anywhere in a line) and '"' (quotes vanish from labels).
std::string KeyLabel(const std::string& name);

}  // namespace bw::lirc
