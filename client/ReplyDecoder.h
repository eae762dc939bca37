#ifndef CLIENT_REPLYDECODER_H_
#define CLIENT_REPLYDECODER_H_

#include <cstdint>
#include <string_view>

#include "client/CommandInfo.h"
#include "client/Field.h"
#include "server/SrvResult.h"

namespace client {

/// What the bytes received so far are.
enum class ReplyState : std::uint8_t {
  Incomplete,  ///< the beginning of a reply
  Complete,
  MayGrow,    ///< complete, unless the command's library could be loaded: then it is doubled
  Malformed,  ///< not a reply to this request, whatever follows
};

/// One of the replies that make up a doubled one.
struct ReplyPart {
  std::uint32_t offset = 0;  ///< of its mark, from the first byte
  std::uint32_t size = 0;
  SrvResult result = SRV_OK;
};

/// What is known of a reply. Each part is mark, result and fields.
///
/// A doubled reply has three parts: the reply, the same once more, and a further one without
/// fields. It comes from the server sending twice for one request, the second time behind the first
/// reply.
struct ReplyLayout {
  ReplyState state = ReplyState::Incomplete;
  std::uint32_t size = 0;     ///< bytes that belong to the reply, once it is complete
  SrvResult result = SRV_OK;  ///< of the command, once its first part is there
  std::uint32_t parts = 0;
  ReplyPart part[3];
  const char* fields = "";  ///< the fields behind mark and result of the first part; see FieldList
  /// The answer outgrew the reply: its fields end within a text, and the last part, which has no
  /// copy of the first in front of it, carries the result BUFFER_OVERFLOW.
  bool brokenOff = false;
};

/// Bytes of mark and result.
inline constexpr std::uint32_t kReplyHead = 6;

/// Looks at what has been received in answer to `request`.
///
/// Never reads outside `received`; nothing in it is believed before it was compared with what is
/// there. What follows the reply is not looked at.
ReplyLayout ExamineReply(Bytes request, Bytes received) noexcept;

/// The fields of one complete reply, taken in order. A field that is not there yields 0 or an empty
/// text, and Failed() from then on.
class ReplyReader {
 public:
  /// \param reply begins at the mark
  explicit ReplyReader(Bytes reply) noexcept : reply_(reply) {}

  std::uint8_t Byte() noexcept;
  std::uint32_t Long() noexcept;
  /// \returns the text; it points into the reply.
  std::string_view Text() noexcept;
  /// \returns the bytes of a buffer or of a guid; they point into the reply.
  Bytes Buffer() noexcept;
  Bytes Guid() noexcept;
  bool Failed() const noexcept { return failed_; }

 private:
  FieldValue Take(FieldKind kind) noexcept;

  Bytes reply_;
  std::uint32_t cursor_ = kReplyHead;
  bool failed_ = false;
};

}  // namespace client

#endif  // CLIENT_REPLYDECODER_H_
