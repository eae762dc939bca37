#include "codec/FieldReader.h"

#include "trace/Zqotrc.h"

// FieldTrace has checked the formats; the compiler cannot see that they are literals.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-extra-args"

void FieldReader::Long(std::uint32_t& field, const FieldTrace<'x'>& trace) {
  if (Failed()) return;
  result_ = srv_.ReadLong(conId_, field);
  if (Failed() && zqotrc::Wanted(TRC_ERROR)) {
    zqotrc::TraceLine(function_, "SRV", trace.file, trace.line, trace.format, result_, field);
  }
}

void FieldReader::TraceText(const FieldTrace<'s'>& trace, const char* text) const {
  if (!zqotrc::Wanted(TRC_ERROR)) return;
  zqotrc::TraceLine(function_, "SRV", trace.file, trace.line, trace.format, result_, text);
}
