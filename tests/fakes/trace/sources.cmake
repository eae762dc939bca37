# What stands in for trace/'s WIN32 files in native programs.
set(QORLIX_TRACE_FAKES
  ${CMAKE_CURRENT_LIST_DIR}/FakeTrace.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FakeTraceHost.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FakeTraceOutputs.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FakeTraceShared.cpp)
