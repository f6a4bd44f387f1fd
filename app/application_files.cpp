#include "app/application_files.h"

#include "base/fatal.h"

namespace purlock {

std::filesystem::path purlockFolder(ApplicationFiles& files) {
    const auto support = files.applicationSupportDirectory();
    if (!support) fatalStop("there is no folder for application data: the home folder is not known");
    auto folder = *support / "Purlock";
    files.createDirectory(folder);
    return folder;
}

}  // namespace purlock
