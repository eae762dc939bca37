#ifndef CLIENT_CAPI_QORLIXCLIENT_H_
#define CLIENT_CAPI_QORLIXCLIENT_H_

/*
 * The plain C interface of the client library, qorlixclient.dll (32-bit).
 *
 * A client is a handle for one connection, made on the first call and kept for further ones. It
 * belongs to one thread at a time; qorlix_cancel alone may be called by any. Nothing throws, and no
 * function but qorlix_open and qorlix_request_create takes memory that has to be given back.
 *
 * Texts are in the ANSI code page of the system and end with a zero byte. A null text is sent as
 * "absent", which is something else than an empty one: the registry commands answer it with 87.
 * Times are in milliseconds.
 *
 * What a function hands out through a pointer belongs to the client and holds until the next call
 * with it. Output arguments are always written, with 0 and empty texts where there is nothing; they
 * may not be null unless the function says so.
 *
 * What the commands do and answer, and all their result codes: docs/protocol.md. How to use this
 * interface: docs/client.md.
 */

#include <stdint.h>

#ifdef _WIN32
#define QORLIX_CALL __cdecl
#else
#define QORLIX_CALL
#endif
#ifdef __cplusplus
#define QORLIX_NOEXCEPT noexcept
extern "C" {
#else
#define QORLIX_NOEXCEPT
#endif

/* Grows when something is added; what is there is never changed. */
#define QORLIX_API_VERSION 1u
uint32_t QORLIX_CALL qorlix_api_version(void) QORLIX_NOEXCEPT;

typedef struct qorlix_client qorlix_client;

/* What a call came to. Below zero, the server has not answered. */
typedef int32_t qorlix_status;
enum {
  QORLIX_OK = 0,            /* the server answered 0: done */
  QORLIX_ANSWERED = 1,      /* it answered something else: qorlix_code tells what */
  QORLIX_PENDING = 2,       /* of qorlix_wait: no whole reply yet (996) */
  QORLIX_ERR_ARGUMENT = -1, /* a handle or an output argument is null, or a number has no meaning
                               (87, where there is a client to tell it) */
  QORLIX_ERR_REQUEST = -2,  /* nothing was sent: the request does not fit 8192 bytes (8602); a call
                               is under way already (170), or none is to be waited for (1168) */
  QORLIX_ERR_CONNECT = -3,  /* no connection: 2 no server runs, 231 all connections are in use, 5 */
  QORLIX_ERR_VERIFY = -4,   /* another user serves the pipe; nothing was sent (1307) */
  QORLIX_ERR_SEND = -5,     /* the request did not get through; the code is Windows' */
  QORLIX_ERR_RECEIVE = -6,  /* no whole reply: 258 out of time, 1223 cancelled, 13 no reply of this
                               server, 109 and 233 the connection broke. The server may have carried
                               the command out. */
  QORLIX_ERR_ROOM = -7      /* the reply came, but is longer than the room for it */
};

/* --- Clients --- */

/* pipe_name: null for the server's. Returns null when there is no memory, or the name has more than
 * 259 bytes. Connects to nothing yet. */
qorlix_client* QORLIX_CALL qorlix_open(const char* pipe_name) QORLIX_NOEXCEPT;
/* Ends the connection and the handle. Null is allowed. */
void QORLIX_CALL qorlix_close(qorlix_client* client) QORLIX_NOEXCEPT;

/* How long to wait for a connection (5000 at first), and for a reply (30000 at first): other
 * clients' requests come first. */
qorlix_status QORLIX_CALL qorlix_set_timeouts(qorlix_client* client, uint32_t connect_ms,
                                              uint32_t exchange_ms) QORLIX_NOEXCEPT;

/* Connects now, to learn whether it works. Every call does it by itself. After the server was
 * restarted, the next call connects anew; a request that was under way is never repeated. */
qorlix_status QORLIX_CALL qorlix_connect(qorlix_client* client) QORLIX_NOEXCEPT;
/* Gives the connection, which is one of 64, free; also gives up a call that was begun. */
qorlix_status QORLIX_CALL qorlix_disconnect(qorlix_client* client) QORLIX_NOEXCEPT;

/* The result of the last call: the server's code or, below QORLIX_OK, the platform's. 0 of a null
 * client. */
uint32_t QORLIX_CALL qorlix_code(const qorlix_client* client) QORLIX_NOEXCEPT;
/* The name of that code, or "" when it has none; and what happened, in one clause. In English and
 * ASCII; they hold for good. */
const char* QORLIX_CALL qorlix_code_name(const qorlix_client* client) QORLIX_NOEXCEPT;
const char* QORLIX_CALL qorlix_text(const qorlix_client* client) QORLIX_NOEXCEPT;

/* --- Who serves the pipe --- */

/* Any program can take the pipe's name before the server does. So a new connection is asked who
 * owns the pipe, before anything is sent. */
enum {
  QORLIX_VERIFY_OFF = 0,   /* does not ask */
  QORLIX_VERIFY_WARN = 1,  /* asks, tells, and goes on */
  QORLIX_VERIFY_REFUSE = 2 /* the default: another user's pipe is QORLIX_ERR_VERIFY; where the
                              platform does not tell, it goes on */
};
enum {
  QORLIX_TRUST_NOT_CHECKED = 0,
  QORLIX_TRUST_TRUSTED = 1, /* administrators, the system or this user */
  QORLIX_TRUST_UNKNOWN = 2, /* the platform does not tell */
  QORLIX_TRUST_FOREIGN = 3  /* another user */
};
typedef struct qorlix_server {
  uint32_t trust;
  uint32_t process_id; /* of this connection's server, 0 when not told; another one than before
                          says that the server was restarted */
  const char* reason;  /* in one clause; holds for good */
} qorlix_server;

qorlix_status QORLIX_CALL qorlix_set_verification(qorlix_client* client,
                                                  int32_t verification) QORLIX_NOEXCEPT;
/* Of the present connection, or of the last one. Does not change qorlix_code, whatever comes of
 * it. */
qorlix_status QORLIX_CALL qorlix_get_server(const qorlix_client* client,
                                            qorlix_server* server) QORLIX_NOEXCEPT;

/* --- Any command --- */

enum {
  QORLIX_REG_DEL_KEY = 1,
  QORLIX_REG_CREATE_KEY = 2,
  QORLIX_REG_SET_VALUE = 3,
  QORLIX_INSTALL = 5,
  QORLIX_DEINSTALL = 6,
  QORLIX_ADD_IP_ADDRESS = 12,
  QORLIX_DEL_IP_ADDRESS = 13,
  QORLIX_INSTALL_WDM_DRIVER_32 = 15,
  QORLIX_NO_OPERATION = 16,
  QORLIX_RUN_ONLINE_PANEL_32 = 17,
  QORLIX_REG_DEL_VALUE = 18,
  QORLIX_REG_ENUM_KEY = 21,
  QORLIX_REG_GET_VALUE = 22,
  QORLIX_REG_ENUM_VALUE = 23,
  QORLIX_REG_SET_VALUE_BASE = 28,
  QORLIX_REG_CREATE_KEY_BASE = 29,
  QORLIX_REG_DEL_KEY_BASE = 30,
  QORLIX_BC_HAS_UNINITIALIZED_INSTANCES = 88,
  QORLIX_BC_BOARD_GET_MAP = 163,
  QORLIX_GET_BOARD_INFORMATION = 191,
  QORLIX_BC_ENUM_INST_BOARD = 192,
  QORLIX_BC_ENUM_BOARD = 193,
  QORLIX_BC_ENUM_AVAILABLE_BOARD = 194,
  QORLIX_BC_GET_BOARD_INFO = 195,
  QORLIX_BC_ENUM_CONFIGURATION = 196,
  QORLIX_BC_ENUM_ADAPTERS = 197,
  QORLIX_BC_SCAN = 199,
  QORLIX_BC_UPDATE_LOG_DEVICES_FOR_DEVICE = 200,
  QORLIX_BC_CREATE_ALL_LOGDEVICES = 201,
  QORLIX_BC_GET_BOARD_INFO_EX = 207,
  QORLIX_TEST_FUNCTION = 240,
  QORLIX_STOP_SERVER = 253,
  QORLIX_REGISTER_FOR_DEVICE_CHANGE_NOTIFICATIONS = 256,
  QORLIX_UNREGISTER_FOR_DEVICE_CHANGE_NOTIFICATIONS = 257,
  QORLIX_GET_DEVICE_CHANGE = 258,
  QORLIX_SILENT_RESTART = 288,
  QORLIX_GET_SILENT_RESTART_RESULT = 289,
  QORLIX_GET_DEVICE_STATE_EX = 290,
  QORLIX_BC_PLAUSIBILITAET_BL = 292
};

/* Bytes of a request, its command code included, and of one reply, at most. A doubled reply
 * (docs/protocol.md) comes whole: room for QORLIX_REPLY_ROOM bytes is enough for any. */
#define QORLIX_MESSAGE_LIMIT 8192u
#define QORLIX_REPLY_ROOM (2u * QORLIX_MESSAGE_LIMIT + 6u)

/* Sends a command with its fields as they lie on the wire, behind the code, and reads its whole
 * reply, the mark in front. fields may be null with size 0, reply with capacity 0, reply_size
 * always; qorlix_last_reply has the reply in any case. After QORLIX_ERR_RECEIVE it is what had
 * arrived. With QORLIX_ERR_ROOM reply_size is what is needed, and qorlix_code the server's. */
qorlix_status QORLIX_CALL qorlix_call(qorlix_client* client, uint16_t command, const void* fields,
                                      uint32_t size, void* reply, uint32_t capacity,
                                      uint32_t* reply_size) QORLIX_NOEXCEPT;
/* The last reply; size may be null. Null when nothing has arrived. */
const uint8_t* QORLIX_CALL qorlix_last_reply(const qorlix_client* client,
                                             uint32_t* size) QORLIX_NOEXCEPT;

/* What there is to know of one command. Fields are written like "text key; long index"; the kinds
 * are byte, short, long, guid, text and buffer. Replies begin with a mark and the result. */
typedef struct qorlix_command {
  uint32_t code;
  const char* name;
  const char* request;  /* the fields behind the command code */
  const char* success;  /* of a reply with the result of success */
  const char* too_long; /* with 8602, because the answer does not fit */
  const char* failure;  /* with other results; 8604 and 8620 stand alone */
  uint32_t done;        /* the result of success: 0, but 999 of TestFunction, whose calls so come
                           to QORLIX_ANSWERED */
  const char* note;
} qorlix_command;

/* The commands in ascending order of their codes; index from 0 on. QORLIX_ERR_ARGUMENT behind the
 * last one. */
uint32_t QORLIX_CALL qorlix_command_count(void) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_get_command(uint32_t index,
                                             qorlix_command* command) QORLIX_NOEXCEPT;

/* --- Building a request --- */

/* A request under construction: fields in the order in which the command reads them. A field that
 * no longer fits makes it unusable for good; that is told once, by the call it is used for
 * (QORLIX_ERR_REQUEST). Independent of clients; may be used for any number of calls. */
typedef struct qorlix_request qorlix_request;

/* Returns null when there is no memory. */
qorlix_request* QORLIX_CALL qorlix_request_create(uint16_t command) QORLIX_NOEXCEPT;
/* Null is allowed. */
void QORLIX_CALL qorlix_request_free(qorlix_request* request) QORLIX_NOEXCEPT;

void QORLIX_CALL qorlix_add_byte(qorlix_request* request, uint8_t value) QORLIX_NOEXCEPT;
void QORLIX_CALL qorlix_add_short(qorlix_request* request, uint16_t value) QORLIX_NOEXCEPT;
void QORLIX_CALL qorlix_add_long(qorlix_request* request, uint32_t value) QORLIX_NOEXCEPT;
/* Null adds an absent text, or buffer. */
void QORLIX_CALL qorlix_add_text(qorlix_request* request, const char* text) QORLIX_NOEXCEPT;
void QORLIX_CALL qorlix_add_buffer(qorlix_request* request, const void* bytes,
                                   uint32_t size) QORLIX_NOEXCEPT;

typedef struct qorlix_guid {
  uint32_t data1;
  uint16_t data2;
  uint16_t data3;
  uint8_t data4[8];
} qorlix_guid;
void QORLIX_CALL qorlix_add_guid(qorlix_request* request, const qorlix_guid* guid) QORLIX_NOEXCEPT;

/* The request's bytes, the command code in front; null when it is unusable. size may be null. */
const uint8_t* QORLIX_CALL qorlix_request_bytes(const qorlix_request* request,
                                                uint32_t* size) QORLIX_NOEXCEPT;

/* As qorlix_call; the reply is there by qorlix_last_reply. */
qorlix_status QORLIX_CALL qorlix_call_request(qorlix_client* client,
                                              const qorlix_request* request) QORLIX_NOEXCEPT;

/* --- Taking a reply apart --- */

/* Set up by qorlix_read; yours. A field that is not there is taken as 0 or as an empty text, and so
 * is every one behind it; `failed` is 1 from then on. */
typedef struct qorlix_reader {
  const uint8_t* bytes;
  uint32_t size;
  uint32_t cursor;
  int32_t failed;
} qorlix_reader;

/* Starts behind mark and result of a reply. `bytes` must outlive the reader. */
void QORLIX_CALL qorlix_read(qorlix_reader* reader, const void* bytes,
                             uint32_t size) QORLIX_NOEXCEPT;
/* The result in a reply; 0xFFFFFFFF when the bytes are too few or have no mark. */
uint32_t QORLIX_CALL qorlix_reply_result(const void* bytes, uint32_t size) QORLIX_NOEXCEPT;

uint8_t QORLIX_CALL qorlix_take_byte(qorlix_reader* reader) QORLIX_NOEXCEPT;
uint32_t QORLIX_CALL qorlix_take_long(qorlix_reader* reader) QORLIX_NOEXCEPT;
/* A text or a buffer: where its bytes are, WITHOUT a zero behind them. Never null; size may be. */
const char* QORLIX_CALL qorlix_take_text(qorlix_reader* reader, uint32_t* size) QORLIX_NOEXCEPT;
void QORLIX_CALL qorlix_take_guid(qorlix_reader* reader, qorlix_guid* guid) QORLIX_NOEXCEPT;

/* --- Calls that go on while you do something else --- */

/* Sends; returns QORLIX_OK once that is done. The call has failed when deadline_ms, from now on,
 * are over, also when all connections stay in use until then (231). Until it has ended every other
 * call is QORLIX_ERR_REQUEST with 170. fields may be null with size 0. */
qorlix_status QORLIX_CALL qorlix_begin(qorlix_client* client, uint16_t command, const void* fields,
                                       uint32_t size, uint32_t deadline_ms) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_begin_request(qorlix_client* client, const qorlix_request* request,
                                               uint32_t deadline_ms) QORLIX_NOEXCEPT;
/* Waits for the reply, with 0 it only looks. QORLIX_PENDING, or what the call came to, as
 * qorlix_call tells it. reply may be null with capacity 0, reply_size always. */
qorlix_status QORLIX_CALL qorlix_wait(qorlix_client* client, uint32_t timeout_ms, void* reply,
                                      uint32_t capacity, uint32_t* reply_size) QORLIX_NOEXCEPT;
/* Ends the call that another thread makes, or that was begun: it comes to QORLIX_ERR_RECEIVE (or
 * QORLIX_ERR_CONNECT or QORLIX_ERR_SEND) with 1223. Without one nothing happens. What the server
 * has read it carries out all the same. Any thread may call it, as long as the client is open. */
void QORLIX_CALL qorlix_cancel(qorlix_client* client) QORLIX_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#include "qorlixcommands.h"

#endif /* CLIENT_CAPI_QORLIXCLIENT_H_ */
