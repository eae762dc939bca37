/* A scan of all boards takes its time. This program goes on meanwhile, and gives up after a while:
 * background [SECONDS]. It also shows a command that is built field by field. */
#include <stdio.h>
#include <stdlib.h>

#include "qorlixclient.h"

enum { kLookEveryMs = 100 };

static int show_state(qorlix_client* client) {
  qorlix_request* request = qorlix_request_create(QORLIX_GET_DEVICE_STATE_EX);
  qorlix_status status;
  qorlix_reader reply;
  const uint8_t* bytes;
  uint32_t size = 0;

  qorlix_add_text(request, "PCI\\VEN_1F3C");
  qorlix_add_long(request, QORLIX_NO_OPTION);
  status = qorlix_call_request(client, request);
  qorlix_request_free(request);
  if (status != QORLIX_OK) {
    printf("state: %s\n", qorlix_text(client));
    return 1;
  }
  bytes = qorlix_last_reply(client, &size);
  qorlix_read(&reply, bytes, size);
  printf("state: status 0x%08lX", (unsigned long)qorlix_take_long(&reply));
  printf(", problem %lu\n", (unsigned long)qorlix_take_long(&reply));
  return reply.failed;
}

int main(int count, char** words) {
  const uint32_t deadline_ms = 1000u * (uint32_t)(count > 1 ? atoi(words[1]) : 30);
  qorlix_client* client = qorlix_open(NULL);
  qorlix_status status = qorlix_begin(client, QORLIX_BC_SCAN, NULL, 0, deadline_ms);

  if (status == QORLIX_OK) {
    printf("scanning\n");
    do {
      /* Whatever else the program has to do comes here; qorlix_cancel would end the call. */
      status = qorlix_wait(client, kLookEveryMs, NULL, 0, NULL);
    } while (status == QORLIX_PENDING);
  }
  printf("scan: %s (%lu)\n", qorlix_text(client), (unsigned long)qorlix_code(client));
  if (status == QORLIX_OK && show_state(client) != 0) status = QORLIX_ANSWERED;
  qorlix_close(client);
  return status == QORLIX_OK ? 0 : 1;
}
