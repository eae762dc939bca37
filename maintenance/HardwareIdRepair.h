#ifndef MAINTENANCE_HARDWAREIDREPAIR_H_
#define MAINTENANCE_HARDWAREIDREPAIR_H_

/// A board whose entries may carry an incomplete hardware identifier.
struct HwIdRepairEntry {
  const char* deviceId;      ///< part of a key's name among the default devices
  const char* boardModel;    ///< part of a key's name among the log devices
  const char* incompleteId;  ///< vendor and device alone: the value that is replaced
  const char* completeId;    ///< with the subsystem: what replaces it
};

/// Completes hardware identifiers in the stack's device configuration.
///
/// Three areas of the configuration are gone through; in each, every row of the table is tried on
/// every subkey, in the order of the table, so after a rewrite the later rows match no more. An
/// identifier that is complete, or that belongs to another board, is left as it is. Reads and
/// writes only through the registry primitives. Failures are traced and skipped.
class HwIdRepair {
 public:
  HwIdRepair();

  /// Goes through all three areas. An exception ends the run.
  void Run();

  /// One row of the table tried on one subkey of an area.
  void RepairBoard(const char* name, const HwIdRepairEntry& row);
  void RepairDefLogDev(const char* name, const HwIdRepairEntry& row);
  void RepairLogDev(const char* name, const HwIdRepairEntry& row);

 private:
  using Step = void (HwIdRepair::*)(const char* name, const HwIdRepairEntry& row);
  void RepairArea(const char* area, Step step);
  void RunPhases();

  const char* const defaultDevices_;
  const char* const defaultLogDevices_;
  const char* const logDevices_;
};

#endif  // MAINTENANCE_HARDWAREIDREPAIR_H_
