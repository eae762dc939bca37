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

void FieldReader::Short(std::uint16_t& field, const ResultTrace& trace) {
  if (Failed()) return;
  result_ = srv_.ReadShort(conId_, field);
  if (Failed()) TraceResult(trace);
}

void FieldReader::Byte(std::uint8_t& field, const ResultTrace& trace) {
  if (Failed()) return;
  result_ = srv_.ReadByte(conId_, field);
  if (Failed()) TraceResult(trace);
}

void FieldReader::Buffer(void* buffer, std::uint32_t capacity, std::uint32_t& length,
                         const ResultTrace& trace) {
  if (Failed()) return;
  result_ = srv_.ReadBuffer(conId_, buffer, capacity, length);
  if (Failed()) TraceResult(trace);
}

void FieldReader::TraceResult(const ResultTrace& trace) const {
  if (!zqotrc::Wanted(TRC_ERROR)) return;
  zqotrc::TraceLine(function_, "SRV", trace.file, trace.line, trace.format, result_);
}
