#ifndef CLI_ACTIONS_H_
#define CLI_ACTIONS_H_

#include "cli/Subcommands.h"

/// What the subcommands do. Each writes its output and returns the exit code.
namespace cli {

int StartAction(const Invocation& invocation, Output& output);
int PingAction(const Invocation& invocation, Output& output);
int StopAction(const Invocation& invocation, Output& output);

int RegLsAction(const Invocation& invocation, Output& output);
int RegValuesAction(const Invocation& invocation, Output& output);
int RegGetAction(const Invocation& invocation, Output& output);
int RegSetAction(const Invocation& invocation, Output& output);
int RegUnsetAction(const Invocation& invocation, Output& output);
int RegCreateAction(const Invocation& invocation, Output& output);
int RegDeleteAction(const Invocation& invocation, Output& output);

int TraceShowAction(const Invocation& invocation, Output& output);
int TraceSetAction(const Invocation& invocation, Output& output);
int TraceRefreshAction(const Invocation& invocation, Output& output);
int TraceFollowAction(const Invocation& invocation, Output& output);
int TraceDumpAction(const Invocation& invocation, Output& output);
int TraceStatsAction(const Invocation& invocation, Output& output);

int BoardListAction(const Invocation& invocation, Output& output);
int BoardInstalledAction(const Invocation& invocation, Output& output);
int BoardAvailableAction(const Invocation& invocation, Output& output);
int BoardAdaptersAction(const Invocation& invocation, Output& output);
int BoardConfigsAction(const Invocation& invocation, Output& output);
int BoardMapAction(const Invocation& invocation, Output& output);
int BoardInfoAction(const Invocation& invocation, Output& output);
int BoardInfoExAction(const Invocation& invocation, Output& output);
int BoardScanAction(const Invocation& invocation, Output& output);
int BoardCreateLogdevicesAction(const Invocation& invocation, Output& output);
int BoardUpdateLogdevicesAction(const Invocation& invocation, Output& output);
int BoardUninitializedAction(const Invocation& invocation, Output& output);

int DeviceStateAction(const Invocation& invocation, Output& output);
int DeviceWatchAction(const Invocation& invocation, Output& output);
int DeviceUnwatchAction(const Invocation& invocation, Output& output);
int DeviceChangesAction(const Invocation& invocation, Output& output);
int DeviceInfoAction(const Invocation& invocation, Output& output);
int CheckAction(const Invocation& invocation, Output& output);

int InstallAction(const Invocation& invocation, Output& output);
int DeinstallAction(const Invocation& invocation, Output& output);
int DriverInstallAction(const Invocation& invocation, Output& output);
int PanelAction(const Invocation& invocation, Output& output);
int RestartAction(const Invocation& invocation, Output& output);
int IpAddAction(const Invocation& invocation, Output& output);
int IpDeleteAction(const Invocation& invocation, Output& output);
int TestAction(const Invocation& invocation, Output& output);

int RawAction(const Invocation& invocation, Output& output);
int DecodeAction(const Invocation& invocation, Output& output);
int DoctorAction(const Invocation& invocation, Output& output);

int TraceReportAction(const Invocation& invocation, Output& output);

int CodesAction(const Invocation& invocation, Output& output);
int CommandsAction(const Invocation& invocation, Output& output);
int HelpAction(const Invocation& invocation, Output& output);

}  // namespace cli

#endif  // CLI_ACTIONS_H_
