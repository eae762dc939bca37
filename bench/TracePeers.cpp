#include "bench/TracePeers.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/ringbuffer_sink.h>

#include <cstddef>
#include <mutex>
#include <string>
#include <utility>

#include "bench/Support.h"

namespace bench {
namespace {

constexpr char kPattern[] = "L QORLIXSR P%P T%t -- SRV  0  0000 %H:%M:%S,%e %s,%# %! %v";
constexpr char kFormat[] = "<< result = 0x{:x} Key {}";
constexpr std::size_t kRingLines = 16384;

/// Opens and closes its file around every line, as the trace facility has to.
class ReopeningSink : public spdlog::sinks::base_sink<std::mutex> {
 public:
  explicit ReopeningSink(std::string name) : name_(std::move(name)) {}

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    file_.open(name_, /*truncate=*/false);
    file_.write(line);
    file_.close();
  }
  void flush_() override {}

 private:
  std::string name_;
  spdlog::details::file_helper file_;
};

std::shared_ptr<spdlog::sinks::sink> MakeSink(PeerRoad road, const char* file) {
  switch (road) {
    case PeerRoad::kFileBuffered:
    case PeerRoad::kFileFlushed:
      return std::make_shared<spdlog::sinks::basic_file_sink_mt>(file);
    case PeerRoad::kFileReopened:
      return std::make_shared<ReopeningSink>(file);
    case PeerRoad::kRing:
      return std::make_shared<spdlog::sinks::ringbuffer_sink_mt>(kRingLines);
  }
  Die("no such road");
}

spdlog::logger* g_disabled = nullptr;

template <std::size_t kSite>
[[gnu::always_inline]] inline void DisabledCall(unsigned result, const char* key) {
  g_disabled->log(spdlog::source_loc{__FILE__, __LINE__ + static_cast<int>(kSite), "Fct: "},
                  spdlog::level::info, kFormat, result, key);
}

template <std::size_t... kSites>
void DisabledCalls(std::index_sequence<kSites...> /*sites*/, unsigned result, const char* key) {
  (DisabledCall<kSites>(result, key), ...);
}

}  // namespace

struct Peer::Logger {
  spdlog::logger logger;
};

Peer::Peer(PeerRoad road, const char* file)
    : logger_(new Logger{spdlog::logger("bench", MakeSink(road, file))}) {
  logger_->logger.set_pattern(kPattern);
  logger_->logger.set_level(spdlog::level::trace);
  logger_->logger.flush_on(road == PeerRoad::kFileFlushed ? spdlog::level::trace
                                                          : spdlog::level::off);
}

Peer::~Peer() = default;

void Peer::Line(const char* function, const char* file, int line, unsigned result,
                const char* key) {
  logger_->logger.log(spdlog::source_loc{file, line, function}, spdlog::level::info, kFormat,
                      result, key);
}

void Peer::Disable() {
  logger_->logger.set_level(spdlog::level::err);
  g_disabled = &logger_->logger;
}

void SixteenDisabledPeerCalls(unsigned result, const char* key) {
  DisabledCalls(std::make_index_sequence<16>(), result, key);
}

}  // namespace bench
