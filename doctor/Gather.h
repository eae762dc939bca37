#ifndef DOCTOR_GATHER_H_
#define DOCTOR_GATHER_H_

#include <string>

#include "doctor/Facts.h"

/// The parts of GatherFacts, one for each subject. None of them changes anything.
namespace doctor {

/// Connects to the pipe, looks at it from there, and asks NoOperation.
PipeFacts GatherPipe(const char* name, std::uint32_t timeoutMs);

/// A folder's path without a separator at its end, and who may write there.
FolderFacts GatherFolder(const std::string& path);

/// What kind of file it is, and who may write to it.
FileFacts GatherFile(const std::string& path);
/// The kind alone.
ImageKind KindOfFile(const std::string& path);

/// The folder that a 32-bit process is led to when it asks for the system directory.
std::string SystemFolder();

/// The stack's keys. \param systemFolder where plug-ins are looked for
void GatherRegistry(const std::string& systemFolder, Facts& facts);

/// The sources of the event log that the server reports under.
std::vector<EventSourceFacts> GatherSources();

}  // namespace doctor

#endif  // DOCTOR_GATHER_H_
