#include <cstddef>
#include <cstring>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "actions/SilentRestartFixture.h"
#include "platform/SystemPath.h"

namespace {

// Blocks of one text that there is still memory for, in this thread; negative for no end of them.
thread_local int g_textsLeft = -1;

}  // namespace

extern "C" {

void* __real_calloc(std::size_t count, std::size_t size);

void* __wrap_calloc(std::size_t count, std::size_t size) {
  if (g_textsLeft >= 0 && count == platform::kMaxPath) {
    if (g_textsLeft == 0) return nullptr;
    --g_textsLeft;
  }
  return __real_calloc(count, size);
}

}  // extern "C"

namespace {

using fake_dynamic_library::Calls;
using fake_named_object::OfferEvent;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kNotFiled = 259;

class SilentRestartTest : public SilentRestartFixture {};

// --- From the request to the result ---

TEST_F(SilentRestartTest, TheRequestIsAnsweredWhileTheWorkerStillRuns) {
  std::promise<void> goOn;
  std::shared_future<void> wait = goOn.get_future().share();
  Restarted() = [wait](char*) {
    wait.wait();
    return 5u;
  };
  OfferEvent("e");
  EXPECT_EQ(Do(kRestart, Request("e")), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 00000000"));
  EXPECT_EQ(ResultOf("e"), kNotFiled);
  goOn.set_value();
  fake_worker_thread::JoinAll();
  EXPECT_EQ(ResultOf("e"), 5u);
  EXPECT_EQ(ResultOf("e"), kNotFiled);
}

TEST_F(SilentRestartTest, TheResultIsFiledBeforeTheEventIsSet) {
  std::promise<void> answered;
  std::shared_future<void> wait = answered.get_future().share();
  Restarted() = [wait](char*) {
    wait.wait();
    return 5u;
  };
  OfferEvent("e");
  std::vector<std::uint32_t> atTheSignal;
  fake_named_object::OnSignal([&] { atTheSignal.push_back(ResultOf("e")); });
  EXPECT_EQ(Do(kRestart, Request("e")), SRV_OK);
  answered.set_value();  // from here on the instance is the worker's
  fake_worker_thread::JoinAll();
  EXPECT_THAT(atTheSignal, ElementsAre(5u));
}

TEST_F(SilentRestartTest, BothLibrariesAreLoadedByFullPathCalledAndUnloadedInTurn) {
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_THAT(Calls(), ElementsAre(std::string("load ") + kAgent, "find DllEntryFktSilent",
                                   std::string("free ") + kAgent, std::string("load ") + kRing,
                                   "find EpIsCpInRing", std::string("free ") + kRing));
}

TEST_F(SilentRestartTest, TheExportsGetCopiesOfTheNameAndTheRingCheck6000) {
  std::string restarted;
  std::string checked;
  std::uint32_t milliseconds = 0;
  Restarted() = [&](char* name) {
    restarted = name;
    std::memset(name, 'w', 260);  // all 260 bytes are the library's to write
    return 0u;
  };
  Checked() = [&](char* name, std::uint32_t ms, std::uint32_t* out) {
    checked = name;
    milliseconds = ms;
    std::memset(name, 'w', 260);
    *out = 0xFFFFFFFF;
    return 31u;
  };
  OfferEvent("e");
  RestartAndWait("e", "CP_L2_1:");
  EXPECT_EQ(restarted, "CP_L2_1:");
  EXPECT_EQ(checked, "CP_L2_1:");
  EXPECT_EQ(milliseconds, 6000u);
  EXPECT_EQ(ResultOf("e"), 0u) << "what the ring check returns is not looked at";
}

TEST_F(SilentRestartTest, TextsOf259BytesAreServedAndLongerOnesRefused) {
  const std::string device(259, 'd');
  const std::string event(259, 'e');
  const std::string tooLong(260, 'x');
  std::string seen;
  Restarted() = [&](char* name) {
    seen = name;
    return 5u;
  };
  OfferEvent(event);
  RestartAndWait(event, device);
  EXPECT_EQ(seen, device);
  EXPECT_EQ(ResultOf(event), 5u);
  EXPECT_EQ(Do(kRestart, Request("e", tooLong)), BUFFER_OVERFLOW);
  EXPECT_EQ(Do(kRestart, Request(tooLong)), BUFFER_OVERFLOW);
  EXPECT_EQ(fake_worker_thread::Started(), 1);
}

TEST_F(SilentRestartTest, EmptyTextsAreServed) {
  OfferEvent("");
  AnswerRestart(5);
  RestartAndWait("", "");
  EXPECT_EQ(ResultOf(""), 5u);
}

TEST_F(SilentRestartTest, AnAbsentTextIs87AndStartsNothing) {
  EXPECT_EQ(Do(kRestart, Absent() + TextField("e")), 87u);
  EXPECT_EQ(Do(kRestart, TextField("CP1") + Absent()), 87u);
  EXPECT_TRUE(Reply().empty());
  EXPECT_EQ(Do(kRestart, Absent() + Wire("0500")), BUFFER_OVERFLOW);
  EXPECT_EQ(fake_worker_thread::Started(), 0);
}

TEST_F(SilentRestartTest, EveryTruncationIsTheReadersCode) {
  ExpectEveryTruncationRefused(kRestart, Request("e"));
  ExpectEveryTruncationRefused(kGetResult, TextField("e"));
}

// --- Results, and when the ring is looked at ---

TEST_F(SilentRestartTest, FourResultsSkipTheRingCheckAlsoWhenTheLibraryReturnsThem) {
  OfferEvent("e");
  for (const std::uint32_t result : {10006u, 8601u, 8603u, 8604u}) {
    AnswerRestart(result);
    RestartAndWait("e");
    EXPECT_EQ(ResultOf("e"), result);
    EXPECT_FALSE(RingLoaded()) << result;
  }
}

TEST_F(SilentRestartTest, AnyOtherResultIsFollowedByTheRingCheck) {
  for (const std::uint32_t result : {0u, 1u, 8600u, 8602u, 8605u, 10005u, 10007u, 0xFFFFFFFFu}) {
    int checks = 0;
    AnswerRestart(result);
    Checked() = [&](char*, std::uint32_t, std::uint32_t*) {
      ++checks;
      return 1u;
    };
    OfferEvent("e");
    RestartAndWait("e");
    EXPECT_EQ(ResultOf("e"), result);
    EXPECT_EQ(checks, 1) << result;
  }
}

TEST_F(SilentRestartTest, AMissingRestartLibraryIs8603) {
  fake_dynamic_library::Reset();
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), SRV_ERR_DLL_NOT_FOUND);
  EXPECT_FALSE(RingLoaded());
}

TEST_F(SilentRestartTest, AMissingRestartExportIs8601AndUnloads) {
  fake_dynamic_library::Add(kAgent, {});
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), SRV_ERR_ENTRY_POINT_MISSING);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
  EXPECT_FALSE(RingLoaded());
}

TEST_F(SilentRestartTest, ARestartThatRaisesIs8604AndUnloads) {
  Restarted() = [](char*) -> std::uint32_t { throw std::runtime_error("fault"); };
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
  EXPECT_FALSE(RingLoaded());
}

TEST_F(SilentRestartTest, LoadingTheRestartLibraryThatRaisesIs8604) {
  fake_dynamic_library::OnLoad([](const std::string&) { throw std::runtime_error("fault"); });
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_FALSE(RingLoaded());
}

TEST_F(SilentRestartTest, ARingCheckThatRaisesIs8604AndUnloads) {
  Checked() = [](char*, std::uint32_t, std::uint32_t*) -> std::uint32_t { throw 7; };
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

TEST_F(SilentRestartTest, LoadingTheRingCheckThatRaisesIs8604) {
  fake_dynamic_library::OnLoad([](const std::string& name) {
    if (name == kRing) throw 7;
  });
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), SRV_ERR_EXCEPTION_OCCURED);
}

TEST_F(SilentRestartTest, AMissingRingCheckLeavesTheResult) {
  OfferEvent("e");
  AnswerRestart(5);
  fake_dynamic_library::Add(kRing, {});
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), 5u);
  fake_dynamic_library::RefuseLoad(kRing, 126);
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), 5u);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

TEST_F(SilentRestartTest, WithoutASystemDirectoryThatFitsNothingIsLoadedAndItIs8603) {
  OfferEvent("e");
  for (const std::size_t size : {0u, 247u, 258u, 259u, 260u, 400u}) {
    fake_system_path::SetSystemDirectory(std::string(size, 's'));
    RestartAndWait("e");
    EXPECT_EQ(ResultOf("e"), SRV_ERR_DLL_NOT_FOUND) << size;
  }
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(SilentRestartTest, ALibraryPathOf259BytesIsLoaded) {
  const std::string directory(259 - std::strlen("\\rstagent9.dll"), 's');
  fake_system_path::SetSystemDirectory(directory);
  fake_dynamic_library::Add(directory + "\\rstagent9.dll", {});
  OfferEvent("e");
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), SRV_ERR_ENTRY_POINT_MISSING);
}

// --- The event and the list ---

TEST_F(SilentRestartTest, ResultsOfOneEventAreFetchedInTheOrderFiled) {
  OfferEvent("e");
  OfferEvent("f");
  for (const std::uint32_t result : {1u, 2u}) {
    AnswerRestart(result);
    RestartAndWait("e");
    AnswerRestart(10 * result);
    RestartAndWait("f");
  }
  EXPECT_EQ(ResultOf("f"), 10u);
  EXPECT_EQ(ResultOf("e"), 1u);
  EXPECT_EQ(ResultOf("e"), 2u);
  EXPECT_EQ(ResultOf("e"), kNotFiled);
  EXPECT_EQ(ResultOf("f"), 20u);
}

TEST_F(SilentRestartTest, AnEventThatNobodyCreatedDropsTheResult) {
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), kNotFiled);
}

TEST_F(SilentRestartTest, ItDropsEarlierResultsOfTheEventAsWellAndNoOthers) {
  OfferEvent("e");
  OfferEvent("f");
  RestartAndWait("e");
  RestartAndWait("f");
  fake_named_object::Reset();
  RestartAndWait("e");
  EXPECT_EQ(ResultOf("e"), kNotFiled);
  EXPECT_EQ(ResultOf("f"), 0u);
}

TEST_F(SilentRestartTest, AResultIsAskedForByAnyNameThatFitsARequest) {
  EXPECT_EQ(ResultOf(std::string(kPipeBufferSize - 6, 'e')), kNotFiled);
  EXPECT_EQ(ResultOf(""), kNotFiled);
  EXPECT_EQ(Do(kGetResult, Absent()), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 03010000"));
}

// --- Workers ---

TEST_F(SilentRestartTest, WithoutMemoryForEitherTextItIs8602AndNothingIsStarted) {
  OfferEvent("e");
  for (const int left : {0, 1}) {
    g_textsLeft = left;
    const SrvResult result = Do(kRestart, Request("e"));
    g_textsLeft = -1;
    EXPECT_EQ(result, BUFFER_OVERFLOW) << left;
    fake_worker_thread::JoinAll();
    EXPECT_THAT(Calls(), IsEmpty()) << left;
  }
}

TEST_F(SilentRestartTest, WithoutAThreadItIs8602AndNothingIsFiled) {
  fake_worker_thread::Refuse();
  OfferEvent("e");
  EXPECT_EQ(Do(kRestart, Request("e")), BUFFER_OVERFLOW);
  EXPECT_TRUE(Reply().empty());
  EXPECT_EQ(ResultOf("e"), kNotFiled);
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(SilentRestartTest, TwoHundredWorkersAtOnceFileTheirResultsEach) {
  constexpr int kWorkers = 200;
  std::promise<void> goOn;
  std::shared_future<void> wait = goOn.get_future().share();
  Restarted() = [wait](char* name) {
    wait.wait();
    return static_cast<std::uint32_t>(std::stoi(name));
  };
  for (int i = 0; i < kWorkers; ++i) {
    OfferEvent("e" + std::to_string(i));
    EXPECT_EQ(Do(kRestart, Request("e" + std::to_string(i), std::to_string(i))), SRV_OK);
  }
  EXPECT_EQ(fake_worker_thread::Started(), kWorkers);
  goOn.set_value();
  // A client that asks all the time, while they end.
  for (int i = 0; i < kWorkers; ++i) (void)ResultOf("other");
  fake_worker_thread::JoinAll();
  for (int i = 0; i < kWorkers; ++i) {
    EXPECT_EQ(ResultOf("e" + std::to_string(i)), static_cast<std::uint32_t>(i));
  }
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

TEST_F(SilentRestartTest, AWorkerOutlivesTheServerObject) {
  std::promise<void> started;
  std::promise<void> goOn;
  std::shared_future<void> wait = goOn.get_future().share();
  Restarted() = [&started, wait](char*) {
    started.set_value();
    wait.wait();
    return 5u;
  };
  OfferEvent("e");
  {
    CQorlixSRVPipe shortLived(nullptr);
    ReceiveCommand(Wire("0000") + Request("e"));
    EXPECT_EQ(shortLived.SilentRestart(kConId), SRV_OK);
    started.get_future().wait();
  }
  goOn.set_value();
  fake_worker_thread::JoinAll();
  EXPECT_THAT(fake_named_object::Calls(), testing::Contains("signal e"));
  EXPECT_EQ(ResultOf("e"), kNotFiled) << "another server's results are its own";
}

}  // namespace
