#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/applications/desktop_entry.h"
#include "platform/linux/system/environment.h"

namespace purlock::host_linux {

/// The desktop files of the system, by their ids and by the programs that they name.
///
/// Built in one go and then unchanged; any thread. An id is the file's path below "applications" with '-' for
/// '/' and without ".desktop"; the folder that comes first wins. At most 16,384 files of at most 256 KiB in
/// 2,000 folders are read, each folder once, also when links lead to it again.
class DesktopIndex {
  public:
    /// Reads all desktop files below `folders`, each with a folder "applications". Takes some milliseconds,
    /// or as long as a slow disk needs.
    static DesktopIndex read(const std::vector<std::string>& folders,
                             const std::vector<std::string>& localeSuffixes);

    /// The entry with that id; null when there is none.
    const DesktopEntry* find(std::string_view id) const;

    /// The id of the application that runs the program at `path`: one whose file names that very path, else
    /// one that names a program with the same name. Among several, one whose id is the program's name wins,
    /// then the first in order. Absent when no desktop file that a menu shows names it, and for programs that
    /// only run others.
    std::optional<std::string> idOfExecutable(std::string_view path) const;

    /// True if only desktop files that no menu shows name the program: a desktop's shell, a handler.
    bool isHelper(std::string_view path) const;

    /// True if a folder that was read has changed since, appeared or gone. Some calls of stat.
    bool isOutdated() const;

    std::size_t size() const { return entries_.size(); }

  private:
    using Entries = std::map<std::string, DesktopEntry, std::less<>>;
    using Executables = std::multimap<std::string, std::string, std::less<>>;  // path or name -> id

    void readFolder(const std::string& folder, const std::string& prefix, int depth,
                    const std::vector<std::string>& localeSuffixes);
    void add(std::string id, DesktopEntry entry);
    void indexExecutables();
    std::optional<std::string> best(std::string_view key, std::string_view name) const;
    bool isNamed(std::string_view key) const;

    Entries entries_;
    Executables executables_;
    std::set<std::pair<std::uint64_t, std::uint64_t>> folders_;  // those read, as the kernel numbers them
    std::map<std::string, std::int64_t>
        folderTimes_;  // time of the last change in ns; 0 when there is no folder
};

/// The folders with "applications" folders in them, in order: $XDG_DATA_HOME and $XDG_DATA_DIRS with the
/// defaults of the XDG Base Directory Specification, then those of Flatpak and snapd where the session's
/// environment leaves them out.
std::vector<std::string> desktopDataFolders(const Environment& environment = processEnvironment);

}  // namespace purlock::host_linux
