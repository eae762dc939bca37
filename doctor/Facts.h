#ifndef DOCTOR_FACTS_H_
#define DOCTOR_FACTS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "doctor/AccessList.h"
#include "doctor/ImageKind.h"
#include "doctor/Severity.h"
#include "traceview/TraceSettings.h"

/// What `qorlixctl doctor` finds on a computer, before anything is concluded from it. Texts are in
/// the ANSI code page; codes are those of the platform, 0 for success.
namespace doctor {

/// A pipe instance that was connected to, and who is at its other end.
struct PipeFacts {
  std::string name;
  std::uint32_t error = 0;      ///< why nobody could be connected to: 2 no pipe, 231 all in use
  std::uint32_t instances = 0;  ///< that exist, used or free; 0: not known
  std::uint32_t limit = 0;      ///< on instances, as the pipe's maker set it; 0: not known
  std::uint32_t process = 0;    ///< the other end's; 0: not known
  std::string program;          ///< its path; empty: not known
  enum class Elevation : std::uint8_t { Unknown, No, Yes };
  Elevation elevation = Elevation::Unknown;
  std::uint32_t answer = 0;  ///< 0 when NoOperation was answered with 0; of no use after an error
};

/// A folder that programs or libraries are loaded from.
struct FolderFacts {
  std::string path;
  std::uint32_t error = 0;  ///< why its access list is not known
  AccessList access;
};

/// A file, where it lies and what it is.
struct FileFacts {
  std::string path;
  ImageKind kind = ImageKind::Missing;
  std::uint32_t error = 0;  ///< why its access list is not known
  AccessList access;
  bool isStandIn = false;  ///< says so itself
};

/// A library of the stack in every place where it may lie. A file that is in none has
/// ImageKind::Missing in both.
struct LibraryFacts {
  FileFacts besideServer;
  FileFacts inSystem;
};

/// A text in the registry.
struct ValueFacts {
  bool isThere = false;
  std::uint32_t type = 0;
  std::string bytes;  ///< all of them, a terminator included
};

/// A key below DefDevices\DeviceID.
struct DeviceFacts {
  std::string name;
  ValueFacts hardwareId;
  ValueFacts installer;
  ValueFacts deinstaller;
  ImageKind installerKind = ImageKind::Missing;    ///< of the file that the value leads to
  ImageKind deinstallerKind = ImageKind::Missing;  ///< likewise
};

/// A source of the Windows event log.
struct EventSourceFacts {
  std::string name;
  bool isRegistered = false;
  std::string messageFile;  ///< as it is registered, its variables replaced; may be empty
  bool hasMessageFile = false;
};

struct TraceFacts {
  traceview::Configuration configuration;
  bool folderIsMissing = false;  ///< of the trace files, if lines go to files
};

struct Facts {
  PipeFacts pipe;
  FileFacts server;  ///< the program: that of the pipe, or QorlixSRV.exe beside qorlixctl
  FolderFacts serverFolder;
  FolderFacts systemFolder;  ///< the one that a 32-bit process is led to
  /// In the order of Libraries().
  std::vector<LibraryFacts> libraries;
  FileFacts engine;  ///< the trace engine's library

  bool hasTree = false;  ///< the stack's key can be read
  ValueFacts setUp;      ///< SetupSucceeded
  ValueFacts strictProfile;
  std::vector<DeviceFacts> devices;

  TraceFacts trace;
  std::vector<EventSourceFacts> sources;
};

/// A library of the stack, and how the server comes to it.
struct LibraryNeed {
  const char* name;
  bool besideServer;      ///< looked for there first, because it is loaded by its bare name
  Severity without;       ///< how much it matters that it is missing
  const char* otherwise;  ///< what happens then
};

/// The stack's libraries that the server loads from its own or the system's folder.
const std::vector<LibraryNeed>& Libraries();

/// Gathers all of it. \param pipe the name to connect to
Facts GatherFacts(const char* pipe, std::uint32_t timeoutMs);

}  // namespace doctor

#endif  // DOCTOR_FACTS_H_
