# What is delivered, and the target `package` that makes a ZIP and an installer of it, in
# <build>/package. What is not there to be delivered is left out.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME package)
set(maps ${CMAKE_BINARY_DIR}/maps)
file(MAKE_DIRECTORY ${maps})
set(linked "")
set(delivered "")

# A program or library, and the folder of the package that it goes to. The linker tells in a map
# which parts of the tool chain's libraries went into it: the bill of materials is made from that.
macro(qorlix_deliver target folder)
  install(TARGETS ${target} RUNTIME DESTINATION ${folder})
  target_link_options(${target} PRIVATE -Wl,-Map,${maps}/${target}.map)
  string(APPEND linked "${folder}/$<TARGET_FILE_NAME:${target}>=${maps}/${target}.map\n")
  list(APPEND delivered ${target})
endmacro()

qorlix_deliver(QorlixSRV .)
qorlix_deliver(qorlixctl .)
install(FILES installer/README.md SECURITY.md CHANGELOG.md DESTINATION .)
install(DIRECTORY docs/ DESTINATION docs FILES_MATCHING PATTERN "*.md" PATTERN "*.svg")

# For programs that talk to the server: headers, the C++ client as an archive of this tool chain,
# the C interface as a library for any, and examples.
install(DIRECTORY client DESTINATION include FILES_MATCHING PATTERN "*.h"
        PATTERN testing EXCLUDE PATTERN capi EXCLUDE)
install(FILES server/CommandCode.h server/SrvResult.h DESTINATION include/server)
add_library(qorlixclient_cpp STATIC
            $<FILTER:$<TARGET_OBJECTS:qorlix_core>,INCLUDE,/client/[A-Za-z]+\\.cpp\\.obj$>)
set_target_properties(qorlixclient_cpp PROPERTIES LINKER_LANGUAGE CXX)
install(TARGETS qorlixclient_cpp ARCHIVE DESTINATION lib)
list(APPEND delivered qorlixclient_cpp)
if(TARGET qorlixclient)
  qorlix_deliver(qorlixclient lib)
  install(TARGETS qorlixclient ARCHIVE DESTINATION lib)
  install(FILES client/capi/qorlixclient.def DESTINATION lib)
  install(DIRECTORY client/capi/ DESTINATION include FILES_MATCHING PATTERN "qorlix*.h")
endif()
if(EXISTS ${CMAKE_SOURCE_DIR}/examples)
  install(DIRECTORY examples DESTINATION . PATTERN CMakeLists.txt EXCLUDE)
endif()

# The stand-ins, where no program finds them by chance.
qorlix_deliver(boardsvc32 standins/boardsvc32)
install(FILES standins/boardsvc32/README.md DESTINATION standins/boardsvc32)
install(DIRECTORY standins/boardsvc32/samples DESTINATION standins/boardsvc32)
install(FILES standins/README.md DESTINATION standins)
qorlix_deliver(ZqTraceEngineX standins)
foreach(target IN LISTS QORLIX_STANDINS)
  if(target MATCHES "_noexport$")
    qorlix_deliver(${target} standins/noexport)
  else()
    qorlix_deliver(${target} standins)
  endif()
endforeach()

file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/linked.txt CONTENT "${linked}")

find_package(Python3 REQUIRED COMPONENTS Interpreter)
find_program(QORLIX_MAKENSIS makensis DOC "Makes the installer")
set(installer "")
if(QORLIX_MAKENSIS)
  set(installer --makensis ${QORLIX_MAKENSIS})
else()
  message(STATUS "the installer is left out of the package: makensis is missing (Debian: nsis)")
endif()

add_custom_target(package
  COMMAND Python3::Interpreter ${CMAKE_SOURCE_DIR}/tools/make_package.py
          --build ${CMAKE_BINARY_DIR} --version ${PROJECT_VERSION} ${installer}
  DEPENDS ${delivered}
  COMMENT "Making the package"
  VERBATIM USES_TERMINAL)

if(BUILD_TESTING AND QORLIX_MAKENSIS AND CMAKE_CROSSCOMPILING AND CMAKE_BUILD_TYPE STREQUAL Release)
  # The package is made when the tests begin, of what is built already.
  add_test(NAME package_build
    COMMAND ${CMAKE_COMMAND} --build ${CMAKE_BINARY_DIR} --target package)
  # By its path: the interpreter's target would be run as a program of the other side.
  add_test(NAME package_test
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tests/package/package_test.py
            --build ${CMAKE_BINARY_DIR} --compiler ${CMAKE_CXX_COMPILER})
  add_test(NAME installer_test
    COMMAND ${CMAKE_SOURCE_DIR}/tests/package/installer_test.sh ${CMAKE_BINARY_DIR}
            ${CMAKE_CXX_COMPILER})
  set_tests_properties(package_build PROPERTIES FIXTURES_SETUP package)
  set_tests_properties(package_test installer_test PROPERTIES FIXTURES_REQUIRED package)
  set_tests_properties(installer_test PROPERTIES RESOURCE_LOCK lane-installer TIMEOUT 120
                       ENVIRONMENT QORLIX_LANE=installer)
endif()
