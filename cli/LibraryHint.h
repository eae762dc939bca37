#ifndef CLI_LIBRARYHINT_H_
#define CLI_LIBRARYHINT_H_

#include <string>

#include "client/Result.h"

namespace cli {

/// Whether a code of a server's answer is one of the server's own, and no library's.
bool IsServersOwn(const client::Result& result);

/// Whose code a server's answer to a board or device command has, and what it usually means there.
/// Empty when the command succeeded, the server did not answer, or its own code says enough.
/// \param notFound what a 2 says of this command's arguments, as a sentence on the library; or ""
std::string BoardLibraryHint(const client::Result& result, const std::string& notFound = {});

}  // namespace cli

#endif  // CLI_LIBRARYHINT_H_
