#ifndef STANDINS_SCRIPT_LOGFILE_H_
#define STANDINS_SCRIPT_LOGFILE_H_

#include <string>

namespace standin {

/// Adds one line to a file that others may read and write meanwhile; it is there when this returns.
/// \returns false if that failed.
bool AppendLine(const std::string& path, const std::string& line);

}  // namespace standin

#endif  // STANDINS_SCRIPT_LOGFILE_H_
