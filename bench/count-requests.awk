# Reads the debug log of Wine's server, and prints how many requests a round trip costs.
#
# Between two marks every request of the server under test (by its thread) and of the load generator
# is counted. A burst of N round trips and one of 2N are there for each case: their difference,
# divided by N, is the cost of one round trip, without what a burst costs to begin and to end.
#
# A request is logged as "thread: name( ...", its answer as "thread: name() = ...".

function isRequest() { return $2 ~ /^[a-z_]+\($/ }

$2 == "open_event(" && match($0, /bench-mark;[^"]*/) {
  split(substr($0, RSTART, RLENGTH), mark, ";")
  if (mark[2] == "end") {
    active = 0
    next
  }
  label = mark[2]
  load = mark[3] ";" mark[4]
  serverThread = mark[5] ":"
  what = mark[6]
  clientThread = $1
  active = 1
  if (!(load in seen)) {
    seen[load] = 1
    loads[++loadCount] = load
  }
  next
}

active && isRequest() {
  if ($1 == serverThread) server[label, load, what]++
  if ($1 == clientThread) client[label, load, what]++
}

function perRoundTrip(counts, label, load) {
  return (counts[label, load, "twice"] - counts[label, load, "once"]) / roundTrips
}

function idleCount(label, load) { return server[label, load, "idle"] + 0 }

END {
  print "| Load | Clients | Product | Yardstick | The same, reading a turn later | " \
        "Product : yardstick | Goal | Client\047s own, product / yardstick | |"
  print "|---|---|---|---|---|---|---|---|---|"
  for (i = 1; i <= loadCount; ++i) {
    load = loads[i]
    split(load, part, ";")
    clients = part[2]
    if (part[1] == "idle") {
      idle = idleCount("product", load)
      printf "| idle for 3 s | %d | %d | %d | %d | | 0 | | %s |\n", clients, idle,
             idleCount("yardstick", load), idleCount("later", load),
             idle == 0 ? "met" : "**missed**"
      continue
    }
    p = perRoundTrip(server, "product", load)
    y = perRoundTrip(server, "yardstick", load)
    if (p <= 0 || y <= 0) {
      print "count-requests: the log holds no requests for " load > "/dev/stderr"
      failed = 1
      continue
    }
    # One client: equal, but for a poll now and then and the edges of a burst.
    goal = clients == 1 ? 1.00 : 1.05
    met = clients == 1 ? p - y < 0.1 : p / y <= goal
    printf "| %s | %d | %.3f | %.3f | %.3f | %.3f | %.2f | %.2f / %.2f | %s |\n", part[1], clients,
           p, y, perRoundTrip(server, "later", load), p / y, goal,
           perRoundTrip(client, "product", load), perRoundTrip(client, "yardstick", load),
           met ? "met" : "**missed**"
  }
  exit failed
}
