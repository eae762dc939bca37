#include "codec/FieldReader.h"
#include "platform/MessageBox.h"
#include "platform/SystemPath.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

/// The code that says "you have reached the elevated server".
constexpr SrvResult kReached = 999;

}  // namespace

SrvResult CQorlixSRVPipe::TestFunction(int conId) {
  static constexpr char kFct[] = "TestFunction: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RequestText<platform::kMaxPath> text;
  FieldReader fields(*this, conId, kFct);
  fields.Text(text, "<< ReadString(String) result = 0x%x ");
  if (fields.Failed()) return fields.Result();

  const char* const shown = text.get() != nullptr ? text.get() : "";
  platform::ShowMessageBox(shown, "TestFunction", platform::BoxStyle::kOkCancel);
  return Send(conId, kReached, shown);
}
