#ifndef SERVER_STRICTPROFILE_H_
#define SERVER_STRICTPROFILE_H_

#include "platform/WinTypes.h"

/// Refuses, or only reports, some of what the server otherwise grants every local user.
///
/// An administrator switches it on, by the value "StrictProfile" of the machine's settings:
/// "report" or "enforce", in any case; anything else, or nothing, leaves it off. Off, whoever asks
/// pays one look at a variable, and nothing else is done or asked.
namespace strict_profile {

enum class Mode { Off, Report, Enforce };

enum class Threat {
  PluginValue,     ///< a change of a value that names a plug-in
  DeviceTree,      ///< the deletion of a tree below the keys of the devices
  TraceKey,        ///< a change at or below the trace configuration
  Stop,            ///< a request to stop
  PluginPath,      ///< a plug-in from outside the system directory
  PipeDescriptor,  ///< a pipe without the access list that it should have
  FirstInstance,   ///< a pipe whose name is taken already
};

/// Of what the server does by itself.
inline constexpr int kNoClient = -1;

/// Reads the setting; called once when the server starts, before anything is asked below.
void Read();

extern Mode g_mode;  ///< changed by Read() alone

inline bool IsOn() { return g_mode != Mode::Off; }

/// To be asked, while IsOn(), about what fits `threat` and is about to be done. What is refused, or
/// would be, is reported to the event log and traced.
///
/// Values, keys and stop requests are granted to administrators. Who the client is is asked for
/// these alone; whose identity cannot be told is none.
///
/// \param conId the connection that asks, or kNoClient
/// \param object what it is about, and behind a backslash `name` unless that is null
/// \returns true when it has to be refused; never in Mode::Report
bool Refuses(Threat threat, int conId, const char* object, const char* name = nullptr);

/// Whether a pipe with these attributes must not be served, because they carry no descriptor.
bool RefusesPipe(const SECURITY_ATTRIBUTES& attributes);

}  // namespace strict_profile

#endif  // SERVER_STRICTPROFILE_H_
