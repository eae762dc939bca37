#include "cli/MessageReport.h"

#include <cstdio>

#include "cli/Guid.h"
#include "cli/Hex.h"
#include "cli/TextEncoding.h"
#include "client/ResultCodes.h"

namespace cli {
namespace {

using client::Bytes;
using client::Field;
using client::FieldKind;
using client::FieldValue;

std::string_view TextOf(Bytes bytes) {
  if (bytes.empty()) return {};
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

const char* KindName(FieldKind kind) {
  switch (kind) {
    case FieldKind::Byte:
      return "byte";
    case FieldKind::Short:
      return "short";
    case FieldKind::Long:
      return "long";
    case FieldKind::Guid:
      return "guid";
    case FieldKind::Text:
      return "text";
    case FieldKind::Buffer:
      return "buffer";
  }
  return "";
}

bool IsNumber(FieldKind kind) { return kind < FieldKind::Guid; }

std::string ValueText(FieldKind kind, const FieldValue& value) {
  if (value.absent) return "absent";
  if (IsNumber(kind)) {
    char text[40];
    (void)std::snprintf(text, sizeof(text), "%u (0x%x)", value.number, value.number);
    return text;
  }
  if (kind == FieldKind::Guid) return GuidText(value.bytes);
  const std::string size = ByteCount(value.bytes.size()) + ": ";
  return size + (kind == FieldKind::Text ? Quoted(TextOf(value.bytes)) : HexDigits(value.bytes));
}

void AddField(JsonWriter& json, const Field& field, const FieldValue& value) {
  json.Open('{').Name("name").Text(field.name).Name("kind").Text(KindName(field.kind));
  if (value.absent) {
    json.Name("absent").Bool(true);
  } else if (IsNumber(field.kind)) {
    json.Name("value").Number(value.number);
  } else if (field.kind == FieldKind::Guid) {
    json.Name("value").Text(GuidText(value.bytes));
  } else {
    if (field.kind == FieldKind::Text) json.Name("value").Text(Utf8FromAnsi(TextOf(value.bytes)));
    json.Name("hex").Text(HexDigits(value.bytes));
  }
  json.Close('}');
}

const char* PartName(const client::ReplyLayout& layout, std::uint32_t index) {
  if (layout.parts == 1) return "reply";
  if (layout.brokenOff) return index == 0 ? "reply, broken off" : "the end of the broken-off reply";
  static constexpr const char* kNames[] = {"reply", "the same reply once more", "a further reply"};
  return kNames[index];
}

}  // namespace

void ShowDump(Report& report, Bytes bytes, std::size_t first) {
  std::string dump = HexDump(bytes, first);
  if (!dump.empty()) dump.pop_back();
  report.Line(dump);
}

std::uint32_t ShowFields(Report& report, const char* description, Bytes message,
                         std::uint32_t cursor, bool isRequest) {
  report.Json().Name("fields").Open('[');
  client::FieldList fields(description);
  Field field;
  while (fields.Next(field)) {
    FieldValue value;
    const auto status =
        client::TakeField(field.kind, message, client::kMessageLimit, isRequest, cursor, value);
    if (status != client::FieldStatus::Taken) {
      report.Line("    " + std::string(field.name) + ": not there in full");
      break;
    }
    AddField(report.Json(), field, value);
    report.Line("    " + std::string(field.name) + ": " + ValueText(field.kind, value));
  }
  report.Json().Close(']');
  return cursor;
}

std::uint32_t ShowRequest(Report& report, Bytes request, std::size_t first) {
  const client::CommandInfo* const command = client::CommandOf(request);
  std::string line = "request, " + ByteCount(request.size()) + ": ";
  if (request.size() < sizeof(std::uint16_t)) {
    line += "too short for a command code";
  } else if (command == nullptr) {
    line += "no command has the code " + std::to_string(request[0] + 256 * request[1]);
  } else {
    line += std::string(command->name) + ", code " +
            std::to_string(static_cast<unsigned>(command->code));
  }
  report.Line(line);
  ShowDump(report, request, first);

  auto end = static_cast<std::uint32_t>(request.size());
  JsonWriter& json = report.Json();
  json.Name("request").Open('{').Name("hex").Text(HexDigits(request));
  if (command != nullptr) {
    json.Name("code").Number(static_cast<std::uint64_t>(command->code));
    json.Name("name").Text(command->name);
    json.Name("readable").Bool(client::IsReadable(*command, request));
    end = ShowFields(report, command->request, request, sizeof(std::uint16_t), /*isRequest=*/true);
  }
  json.Close('}');
  return end;
}

void ShowPart(Report& report, const client::Reply& reply, std::uint32_t index) {
  const client::ReplyPart& part = reply.layout.part[index];
  const Bytes bytes = reply.bytes.subspan(part.offset, part.size);
  const std::string what = PartName(reply.layout, index);
  report.Line(what + ", " + ByteCount(part.size) + ": mark 4, result " +
              CodeAndName(part.result, client::ResultName(part.result)) + ": " +
              client::ResultText(part.result));
  ShowDump(report, bytes, part.offset);

  JsonWriter& json = report.Json();
  json.Open('{').Name("what").Text(what).Name("offset").Number(part.offset);
  json.Name("hex").Text(HexDigits(bytes));
  json.Name("mark").Number(REPLY_MARK).Name("code").Number(part.result);
  json.Name("name").Text(client::ResultName(part.result));
  // The last part of several has no fields, and a repetition's are those of the first.
  (void)ShowFields(report, index == 0 ? reply.layout.fields : "", bytes, client::kReplyHead,
                   /*isRequest=*/false);
  json.Close('}');
}

void ShowNote(Report& report, const client::CommandInfo* command) {
  if (command == nullptr || *command->note == '\0') return;
  report.Json().Name("note").Text(command->note);
  report.Line(std::string("    note: ") + command->note);
}

}  // namespace cli
