#include "cli/LibraryHint.h"

#include "client/Enumeration.h"

namespace cli {
namespace {

constexpr SrvResult kNotFound = 2;
constexpr SrvResult kInvalidParameter = 87;

}  // namespace

bool IsServersOwn(const client::Result& result) {
  return result.is(BUFFER_OVERFLOW) || result.is(SRV_ERR_EXCEPTION_OCCURED) ||
         result.is(SRV_ERR_UNKNOWN_COMMAND);
}

std::string BoardLibraryHint(const client::Result& result, const std::string& notFound) {
  if (result.is(SRV_ERR_EXCEPTION_OCCURED)) return "it was the board library that raised it";
  if (result.ok() || !result.fromServer() || IsServersOwn(result)) return {};
  const std::string whose = "the code is the board library's; ";
  if (result.is(kNotFound) && !notFound.empty()) return whose + "as a rule " + notFound;
  if (result.is(kInvalidParameter)) {
    return whose + "as a rule an argument that it needs is empty, or not one that it takes";
  }
  if (result.is(client::kMoreData)) {
    return whose + "as a rule its answer needs more room than it was granted";
  }
  return whose + "its documents say what it means";
}

}  // namespace cli
