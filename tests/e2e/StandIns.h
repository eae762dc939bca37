#ifndef TESTS_E2E_STANDINS_H_
#define TESTS_E2E_STANDINS_H_

#include <string>
#include <vector>

#include "tests/e2e/Wire.h"

namespace e2e {

/// The vendor's libraries as a server meets them: stand-ins in the system directory, with a script
/// and a log that are the test's own.
///
/// Servers that are started while it lives find script and logs. What lies in the system directory
/// under a name that it uses is put aside, and brought back at its end; by then no server may run.
class StandIns {
 public:
  /// Six libraries that the server looks for; the plug-in among them by the name `sampledev.dll`.
  static const std::vector<std::string>& All();

  StandIns();
  ~StandIns();
  StandIns(const StandIns&) = delete;
  StandIns& operator=(const StandIns&) = delete;

  void PlaceAll();
  /// `as` is a path from the system directory; the file's own name by default.
  void Place(const std::string& file, const std::string& as = "");
  /// The copy that loads and lacks the entry points.
  void PlaceTwin(const std::string& file);
  void PlaceBytes(const std::string& as, const Bytes& content);
  void Remove(const std::string& name);
  /// Into the folder of the server's program, which nothing else uses under these names.
  void PlaceBesideServer(const std::string& file);
  void RemoveBesideServer(const std::string& file);

  /// What the calls from now on are answered with.
  void Script(const std::string& text) const;
  /// Every call of this entry point, with one or more lines of the script.
  void Answer(const std::string& entryPoint, const std::string& lines) const;

  /// Calls since the last ForgetCalls, without what differs from run to run: the numbers of call,
  /// thread and script line.
  std::vector<std::string> Calls() const;
  /// Waits until there are that many.
  std::vector<std::string> CallsOnceThereAre(std::size_t count) const;
  /// The same of the board library: names and results, the lock they found.
  std::vector<std::string> BoardCalls() const;
  void ForgetCalls() const;

  /// For servers that make too many calls to note each: takes the log away from those that start
  /// later.
  void NoteNothing() const;

  /// A path from the system directory.
  static std::string InSystemDirectory(const std::string& name);

 private:
  void PutAside(const std::string& path);
  void Copy(const std::string& file, const std::string& to);

  std::string folder_, script_, log_, boardLog_;
  std::vector<std::string> placed_;
};

}  // namespace e2e

#endif  // TESTS_E2E_STANDINS_H_
