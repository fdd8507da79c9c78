// What the Qt tests expect to see, read straight from the Device Library's
// files with a reader of their own: the names the lists should show, a
// device's header fields and key table, a protocol's statements. It reads only
// the plain layout the sample files use (keyword = value, comments after an
// apostrophe), so that the program's own parser is checked against the files
// and not against itself.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace bw::guitest {

struct DeviceKey {
  std::string label;
  /// The codes as written after "=", before any ";".
  std::string codes;
};

struct DeviceFile {
  std::filesystem::path path;
  /// Header keywords (upper case, blanks removed) and their trimmed values.
  std::map<std::string, std::string> header;
  std::vector<DeviceKey> keys;

  /// The header value of `keyword`, "" when the file has none.
  std::string Header(const std::string& keyword) const;
};

struct ProtocolFile {
  std::filesystem::path path;
  /// The name from the first PROTOCOL or FORMAT line, upper-cased ("" when none).
  std::string name;
  /// Statements (upper case keyword, blanks removed) and DEFINE names, with their values.
  std::map<std::string, std::string> statements;
  std::map<std::string, std::string> defines;
};

/// Every file of `folder` whose extension is `extension` (".dvc"), ignoring case.
std::vector<std::filesystem::path> FilesWithExtension(const std::filesystem::path& folder,
                                                      const std::string& extension);

DeviceFile ReadDeviceFile(const std::filesystem::path& path);
ProtocolFile ReadProtocolFile(const std::filesystem::path& path);

/// The device whose list name (file name without extension, upper case) is `listName`.
DeviceFile DeviceNamed(const std::filesystem::path& library, const std::string& listName);
/// The protocol file whose name is `name` (after upper-casing).
ProtocolFile ProtocolNamed(const std::filesystem::path& library, const std::string& name);

std::string Upper(std::string text);
/// The file's name without its extension, upper-cased: how the device list names it.
std::string ListName(const std::filesystem::path& path);
std::string ReadWholeFile(const std::filesystem::path& path);

}  // namespace bw::guitest
