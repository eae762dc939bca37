# Writes the page of a trace report as one C++ file: two texts, between which the data goes.
#   cmake -D FOLDER=... -D SCRIPTS=a.js,b.js -D OUTPUT=... -P EmbedReportPage.cmake
#
# The page lets a browser run its own style and script only; it knows them by their hashes, which
# are worked out here. The same sources give the same file.

# The word by which a content security policy knows a text.
function(policy_hash text result)
  set(alphabet ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  string(SHA256 hex "${text}")
  set(base64 "")
  # 32 bytes: ten groups of three, and two bytes with a zero byte behind them.
  foreach(group RANGE 10)
    math(EXPR at "${group} * 6")
    string(SUBSTRING "${hex}00" ${at} 6 digits)
    math(EXPR number "0x${digits}")
    foreach(shift IN ITEMS 18 12 6 0)
      math(EXPR letter "(${number} >> ${shift}) & 63")
      string(SUBSTRING "${alphabet}" ${letter} 1 letter)
      string(APPEND base64 "${letter}")
    endforeach()
  endforeach()
  string(SUBSTRING "${base64}" 0 43 base64)
  set(${result} "sha256-${base64}=" PARENT_SCOPE)
endfunction()

# Neither may end its element early, and the literal not either.
function(check_embeddable what text)
  string(TOLOWER "${text}" lower)
  foreach(word IN ITEMS "</script" "</style" "<!--" ")qorlixpage\"")
    string(FIND "${lower}" "${word}" found)
    if(NOT found EQUAL -1)
      message(FATAL_ERROR "${what} may not hold ${word}")
    endif()
  endforeach()
endfunction()

file(READ "${FOLDER}/page.html" page)
file(READ "${FOLDER}/page.css" style)
set(script "")
string(REPLACE "," ";" names "${SCRIPTS}")
foreach(name IN LISTS names)
  file(READ "${FOLDER}/${name}" part)
  string(APPEND script "${part}")
endforeach()
check_embeddable("the style" "${style}")
check_embeddable("the script" "${script}")

policy_hash("${style}" style_hash)
policy_hash("${script}" script_hash)
string(REPLACE "@STYLE_HASH@" "${style_hash}" page "${page}")
string(REPLACE "@SCRIPT_HASH@" "${script_hash}" page "${page}")
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")

string(FIND "${page}" "@DATA@" at)
math(EXPR behind "${at} + 6")
string(SUBSTRING "${page}" 0 ${at} head)
string(SUBSTRING "${page}" ${behind} -1 tail)
file(WRITE "${OUTPUT}" "#include \"traceview/ReportPage.h\"

namespace traceview {

const std::string_view kReportPageHead = R\"qorlixpage(${head})qorlixpage\";
const std::string_view kReportPageTail = R\"qorlixpage(${tail})qorlixpage\";

}  // namespace traceview
")
