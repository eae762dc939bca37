# Reads the debug log of Wine's server, and prints how many requests a trace line costs.
#
# Between two marks every request of the thread that set them is counted. A run of N lines and one
# of 2N are there for each kind: their difference, divided by N, is the cost of one line.
#
# A request is logged as "thread: name( ...", its answer as "thread: name() = ...".

function isRequest() { return $2 ~ /^[a-z_]+\($/ }

$2 == "open_event(" && match($0, /bench-mark;[^"]*/) {
  split(substr($0, RSTART, RLENGTH), mark, ";")
  active = mark[2] != "end"
  if (!active) next
  thread = $1
  kind = mark[2]
  subject = mark[3]
  what = mark[4]
  if (what == "once") {
    kinds[++rows] = kind
    subjects[rows] = subject
  }
  next
}

active && isRequest() && $1 == thread { count[kind, subject, what]++ }

function perLine(kind, subject) {
  return (count[kind, subject, "twice"] - count[kind, subject, "once"]) / lines
}

END {
  print "| Output | Line by | Requests | Floor | Goal | |"
  print "|---|---|---|---|---|---|"
  for (i = 1; i <= rows; ++i) {
    if (subjects[i] == "floor") continue
    cost = perLine(kinds[i], subjects[i])
    floor = perLine(kinds[i], "floor")
    if (floor <= 0) {
      print "count-trace-requests: the log holds no requests for " kinds[i] > "/dev/stderr"
      failed = 1
      continue
    }
    goal = verdict = ""
    if (subjects[i] == "trace facility") {
      goal = "the floor"
      verdict = cost - floor < 0.05 ? "met" : "**missed**"
    }
    printf "| %s | %s | %.3f | %.3f | %s | %s |\n", kinds[i], subjects[i], cost, floor, goal, verdict
  }
  exit failed || rows == 0
}
