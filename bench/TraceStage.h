#ifndef BENCH_TRACESTAGE_H_
#define BENCH_TRACESTAGE_H_

#include <cstdint>
#include <string>

#include "bench/TraceFloor.h"
#include "bench/TracePeers.h"
#include "tests/support/RegistryKeyScratch.h"

namespace bench {

/// Who writes the lines that are measured. All write the same text, from one call site each.
class TraceSubject {
 public:
  TraceSubject() = default;
  virtual ~TraceSubject() = default;
  TraceSubject(const TraceSubject&) = delete;
  TraceSubject& operator=(const TraceSubject&) = delete;

  virtual const char* Name() const = 0;
  virtual void Lines(unsigned count) = 0;
};

/// The facility's configuration in the registry and a folder for files, both ours while it lives.
class TraceStage {
 public:
  TraceStage();
  ~TraceStage();
  TraceStage(const TraceStage&) = delete;
  TraceStage& operator=(const TraceStage&) = delete;

  /// Has the facility of this process read a configuration with this output and program mask.
  void Configure(const char* output, const char* mask) const;

  std::string ProductFile() const { return folder_ + "\\product1.TRC"; }
  std::string FloorFile() const { return folder_ + "\\floor.txt"; }
  std::string PeerFile(const char* name) const;

 private:
  RegistryKeyScratch key_{kTraceKey};
  std::string folder_;
};

inline constexpr std::uint32_t kBenchRingSize = 2000000;

class ProductSubject : public TraceSubject {
 public:
  const char* Name() const override { return "trace facility"; }
  void Lines(unsigned count) override;
};

class FileFloorSubject : public TraceSubject {
 public:
  explicit FileFloorSubject(const char* file) : floor_(file) {}
  const char* Name() const override { return "floor"; }
  void Lines(unsigned count) override;

 private:
  FileFloor floor_;
};

class RingFloorSubject : public TraceSubject {
 public:
  const char* Name() const override { return "floor"; }
  void Lines(unsigned count) override;
  const RingFloor& floor() const { return floor_; }

 private:
  RingFloor floor_{kBenchRingSize};
};

class PeerSubject : public TraceSubject {
 public:
  PeerSubject(const char* name, PeerRoad road, const std::string& file)
      : name_(name), peer_(road, file.c_str()) {}
  const char* Name() const override { return name_; }
  void Lines(unsigned count) override;

 private:
  const char* name_;
  Peer peer_;
};

/// Calls that are not wanted, 16 to a round. Their arguments have an effect that must not come.
void UnwantedProductCalls(unsigned rounds);
void UnwantedFloorCalls(unsigned rounds);
void UnwantedPeerCalls(unsigned rounds);

/// End the program unless floor and product have written the same: as many bytes, and lines that
/// differ in nothing but digits.
void CheckFiles(const TraceStage& stage);
void CheckRings(const RingFloor& floor);

}  // namespace bench

#endif  // BENCH_TRACESTAGE_H_
