#include "tests/fakes/FakeClientIdentity.h"

#include "server/ClientIdentity.h"

namespace {

bool g_isAdministrator = false;
int g_questions = 0;
HANDLE g_lastPipe = nullptr;

}  // namespace

namespace fake_client_identity {

void Reset() {
  g_isAdministrator = false;
  g_questions = 0;
  g_lastPipe = nullptr;
}

void SetAdministrator(bool isAdministrator) { g_isAdministrator = isAdministrator; }
int Questions() { return g_questions; }
HANDLE LastPipe() { return g_lastPipe; }

}  // namespace fake_client_identity

bool client_identity::IsAdministrator(HANDLE pipe) {
  ++g_questions;
  g_lastPipe = pipe;
  return g_isAdministrator;
}
