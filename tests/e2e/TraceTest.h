#ifndef TESTS_E2E_TRACETEST_H_
#define TESTS_E2E_TRACETEST_H_

#include "tests/e2e/SharedServerTest.h"
#include "tests/e2e/TraceLines.h"
#include "tests/e2e/TraceSetup.h"

namespace e2e {

/// A client on a server that all tests of a suite share and that traces everything into files.
///
/// A test begins and ends while the server waits and no client but `client_` is connected, so the
/// lines in between are those of the test. Whoever connects others waits for their end.
class TraceTest : public SharedServerTest {
 protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite();
  void SetUp() override;
  void TearDown() override;

  /// The lines since the last call, once the server waits and nothing is left for it to do. Needs
  /// the configuration that everything is traced with.
  static Lines NewLines();

  /// The same as soon as the last of them is this one.
  static Lines NewLinesUpTo(const std::string& last);

  /// Makes these the parameters that are in force. Where everything is traced, the lines of that
  /// are taken away.
  void Configure(const TraceParameters& parameters);

  /// Sends the request. \returns its lines, once the server waits again; its reply is read.
  Lines LinesOf(const Bytes& request);

  /// The server has done all that there was to do for the requests before this call, and answered
  /// two more.
  void LetItFinish();

  /// Takes the replies that have come.
  void ReadAway();

  /// Closes a connection that waits for its next request, and waits until the server has seen it.
  static void CloseAndWait(WireClient& client);
};

/// A configuration that everything is traced with, for tests that start servers of their own.
class OwnServerTraceTest : public testing::Test {
 protected:
  OwnServerTraceTest() { trace_setup::Replace(AllLinesWith()); }
  ~OwnServerTraceTest() override {
    server_.Kill();
    trace_setup::Clear();
  }

  /// Lines of the first file: as they are, or once the server waits and nothing is left to do.
  static Lines AllLines() { return TextLines(trace_setup::ReadFile(trace_setup::FileName(1))); }
  static Lines AllLinesOnceItWaits();

  ServerProcess server_;
};

}  // namespace e2e

#endif  // TESTS_E2E_TRACETEST_H_
