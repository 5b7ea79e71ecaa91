#include "inventory/PrivateFolder.h"

#include "inventory/Ending.h"
#include "inventory/Failure.h"

#include <stdlib.h> // mkdtemp is POSIX: <cstdlib> does not promise it
#include <unistd.h> // declares it on macOS

#include <cerrno>
#include <filesystem>

namespace inventory {

PrivateFolder::PrivateFolder()
{
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    if (error) {
        throw Failure("the folder for temporary files: " + error.message());
    }
    m_path = (parent / "snmp-inventory-XXXXXX").string();
    int reason = 0;
    Ending::change([this, &reason](Ending::Record& record) {
        if (mkdtemp(m_path.data()) == nullptr) {
            reason = errno;
        } else {
            record.folder = m_path;
        }
    });
    if (reason != 0) {
        throw Failure(m_path, reason);
    }
}

PrivateFolder::~PrivateFolder()
{
    Ending::change([this](Ending::Record& record) {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
        record.folder.clear();
    });
}

} // namespace inventory
