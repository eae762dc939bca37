#ifndef STANDINS_SCRIPT_TESTING_LIBRARYFIXTURE_H_
#define STANDINS_SCRIPT_TESTING_LIBRARYFIXTURE_H_

#include <gtest/gtest.h>

#include <string>

/// A stand-in as a server meets it: loaded from the folder that the build puts it in, with a script
/// and a log of the test's own.
class LibraryFixture : public testing::Test {
 protected:
  explicit LibraryFixture(std::string file);
  ~LibraryFixture() override;

  /// The next call reads this.
  void Script(const std::string& text) const;

  /// The log so far, without the sequence number at the beginning of each line and without the
  /// thread number, which the fixture checks.
  std::string Log() const;

  /// Of the log's last line.
  unsigned LastSequence() const;

  void Load();
  void Free();

  /// Null, with a failure, if there is no such export.
  template <typename Function>
  Function Find(const char* name) const {
    return reinterpret_cast<Function>(FindAny(name));
  }

  /// Where the build puts the stand-ins, without a separator at its end.
  static std::string StandInFolder();

 private:
  void* FindAny(const char* name) const;
  std::string WholeLog() const;

  std::string file_, script_, log_;
  void* library_ = nullptr;
};

#endif  // STANDINS_SCRIPT_TESTING_LIBRARYFIXTURE_H_
