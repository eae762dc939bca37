#include <memory>

#include "platform/FencedBuffer.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

// The sanitizer is the fence here.
char* platform::FencedBuffer() {
  const NotOurs notOurs;
  if (fault_plan::Fails("platform::FencedBuffer")) return nullptr;
  static const std::unique_ptr<char[]> buffer(new char[65536]);
  return buffer.get();
}
