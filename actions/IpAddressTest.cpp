#include <optional>
#include <set>
#include <stdexcept>

#include "actions/ActionFixture.h"

namespace {

using fake_dynamic_library::Calls;
using fake_dynamic_library::Export;
using testing::ElementsAre;

constexpr auto kAdd = &CQorlixSRVPipe::AddIpAddress;
constexpr auto kDel = &CQorlixSRVPipe::DelIpAddress;
const std::string kFolder = "C:\\windows\\system32";
const std::string kLibrary = kFolder + "\\ipcfgx.dll";

std::optional<std::vector<std::uint32_t>> g_ran;
std::uint32_t g_result = 0;
std::uint32_t g_seenContext = 99;
std::set<std::uint32_t> g_addresses;  // by context

std::uint32_t Add(std::uint32_t address, std::uint32_t mask, std::uint32_t ifIndex,
                  std::uint32_t* context, std::uint32_t* instance) {
  g_ran = {address, mask, ifIndex};
  g_seenContext = *context;
  *context = address + 1;
  *instance = 7;
  g_addresses.insert(*context);
  return g_result;
}
std::uint32_t Delete(std::uint32_t context) {
  g_ran = {context};
  return g_addresses.erase(context) != 0 ? 0 : 87;
}
std::uint32_t ThrowAdd(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t*,
                       std::uint32_t*) {
  throw std::runtime_error("fault");
}
std::uint32_t ThrowDelete(std::uint32_t) { throw 7; }

class IpAddressTest : public ActionFixture {
 protected:
  IpAddressTest() {
    fake_system_path::SetSpecialFolder(kFolder);
    g_ran.reset();
    g_result = 0;
    g_addresses.clear();
  }
  static void AddLibrary() {
    fake_dynamic_library::Add(
        kLibrary, {{"IE_AddIPAddressEx", Export(Add)}, {"IE_DeleteIPAddressEx", Export(Delete)}});
  }
};

const Bytes kAddRequest = Wire("0100007F 00FFFFFF 03000000");
const Bytes kDelRequest = Wire("0200007F");

TEST_F(IpAddressTest, AddHandsOnTheThreeValuesAndTwoEmptyOutputs) {
  AddLibrary();
  EXPECT_EQ(Do(kAdd, kAddRequest), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_THAT(*g_ran, ElementsAre(0x7F000001u, 0xFFFFFF00u, 3u));
  EXPECT_EQ(g_seenContext, 0u);
  EXPECT_TRUE(Reply().empty());
}

TEST_F(IpAddressTest, DelHandsOnTheContext) {
  AddLibrary();
  EXPECT_EQ(Do(kDel, kDelRequest), 87u);
  ASSERT_TRUE(g_ran);
  EXPECT_THAT(*g_ran, ElementsAre(0x7F000002u));
}

TEST_F(IpAddressTest, WhatAddReturnedDelRemoves) {
  AddLibrary();
  EXPECT_EQ(Do(kAdd, kAddRequest), 0u);
  EXPECT_EQ(g_addresses.size(), 1u);
  EXPECT_EQ(Do(kDel, kDelRequest), 0u);
  EXPECT_TRUE(g_addresses.empty());
}

TEST_F(IpAddressTest, TheLibrarysResultIsTheCommands) {
  AddLibrary();
  g_result = 5010;
  EXPECT_EQ(Do(kAdd, kAddRequest), 5010u);
}

TEST_F(IpAddressTest, TheLibraryIsLoadedByItsFullPathAndUnloadedEveryTime) {
  AddLibrary();
  EXPECT_EQ(Do(kAdd, kAddRequest), 0u);
  EXPECT_EQ(Do(kDel, kDelRequest), 0u);
  EXPECT_THAT(Calls(),
              ElementsAre("load " + kLibrary, "find IE_AddIPAddressEx", "free " + kLibrary,
                          "load " + kLibrary, "find IE_DeleteIPAddressEx", "free " + kLibrary));
}

TEST_F(IpAddressTest, AMissingLibraryIs8603) {
  EXPECT_EQ(Do(kAdd, kAddRequest), SRV_ERR_DLL_NOT_FOUND);
  EXPECT_EQ(Do(kDel, kDelRequest), SRV_ERR_DLL_NOT_FOUND);
}

TEST_F(IpAddressTest, WithoutAFolderOrRoomNothingIsLoadedAndItIs8603) {
  for (const std::size_t size : {std::size_t{0}, 260 - std::string("\\ipcfgx.dll").size(),
                                 std::size_t{259}, std::size_t{260}, std::size_t{400}}) {
    fake_system_path::SetSpecialFolder(std::string(size, 's'));
    fake_dynamic_library::Add("\\ipcfgx.dll", {{"IE_AddIPAddressEx", Export(Add)}});
    EXPECT_EQ(Do(kAdd, kAddRequest), SRV_ERR_DLL_NOT_FOUND) << size;
    EXPECT_EQ(Do(kDel, kDelRequest), SRV_ERR_DLL_NOT_FOUND) << size;
    EXPECT_EQ(Calls().back(), "load ") << size;
  }
  EXPECT_FALSE(g_ran);
}

TEST_F(IpAddressTest, APathOf259BytesIsLoaded) {
  const std::string folder(259 - std::string("\\ipcfgx.dll").size(), 's');
  fake_system_path::SetSpecialFolder(folder);
  fake_dynamic_library::Add(folder + "\\ipcfgx.dll", {{"IE_AddIPAddressEx", Export(Add)}});
  EXPECT_EQ(Do(kAdd, kAddRequest), 0u);
}

TEST_F(IpAddressTest, AMissingExportIs8601AndUnloads) {
  fake_dynamic_library::Add(kLibrary, {});
  EXPECT_EQ(Do(kAdd, kAddRequest), SRV_ERR_ENTRY_POINT_MISSING);
  EXPECT_EQ(Do(kDel, kDelRequest), SRV_ERR_ENTRY_POINT_MISSING);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

TEST_F(IpAddressTest, ALibraryThatRaisesIs8604AndUnloaded) {
  fake_dynamic_library::Add(kLibrary, {{"IE_AddIPAddressEx", Export(ThrowAdd)},
                                       {"IE_DeleteIPAddressEx", Export(ThrowDelete)}});
  EXPECT_EQ(Do(kAdd, kAddRequest), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(Do(kDel, kDelRequest), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

TEST_F(IpAddressTest, LoadingThatRaisesIs8604) {
  AddLibrary();
  fake_dynamic_library::OnLoad([](const std::string&) { throw std::runtime_error("fault"); });
  EXPECT_EQ(Do(kAdd, kAddRequest), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(Do(kDel, kDelRequest), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_FALSE(g_ran);
}

TEST_F(IpAddressTest, EveryTruncationIsTheReadersCode) {
  AddLibrary();
  ExpectEveryTruncationRefused(kAdd, kAddRequest);
  ExpectEveryTruncationRefused(kDel, kDelRequest);
}

}  // namespace
