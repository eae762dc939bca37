/* Is the server there? And what does it read for a value of the registry? */
#include <stdio.h>

#include "qorlixclient.h"

int main(void) {
  qorlix_client* client = qorlix_open(NULL);
  qorlix_text_value mode;
  qorlix_status status =
      qorlix_reg_get_value(client, "SOFTWARE\\Vesmark\\NORVA\\Demo", "Mode", &mode);
  if (status < QORLIX_OK) printf("no answer: %s\n", qorlix_text(client));
  if (status == QORLIX_ANSWERED) printf("refused: %s\n", qorlix_text(client));
  if (status == QORLIX_OK) printf("Mode is %s\n", mode.text);
  qorlix_close(client);
  return status == QORLIX_OK ? 0 : 1;
}
