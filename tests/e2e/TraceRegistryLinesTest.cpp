#include <gmock/gmock.h>

#include "tests/e2e/RegistryScratch.h"
#include "tests/e2e/TraceTest.h"
namespace e2e {
}
