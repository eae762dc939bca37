#ifndef SERVER_CRASHREPORT_H_
#define SERVER_CRASHREPORT_H_

#include <cstddef>

#include "platform/CrashEvidence.h"

/// A crash of the server in words: what happened where and when, and the last requests, oldest
/// first, the one being served marked. As platform::DescribeCrash wants it.
std::size_t ReportCrash(const platform::Crash& crash, char* text, std::size_t capacity);

#endif  // SERVER_CRASHREPORT_H_
