#ifndef CLIENT_CAPI_QORLIXCOMMANDS_H_
#define CLIENT_CAPI_QORLIXCOMMANDS_H_

/*
 * One function for each command, GetBoardInformation and TestFunction apart: these two are made
 * with qorlix_call_request. Include qorlixclient.h, which includes this.
 */

#include "qorlixclient.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A text of an answer. */
typedef struct qorlix_text_value {
  const char* text; /* ends with a zero byte; never null */
  uint32_t size;    /* its bytes; it may have zero bytes within */
  uint32_t length;  /* what was told of it: with 234 and 8602 the text is empty, and this is what it
                       needs; 0 where the command does not tell */
} qorlix_text_value;

/* --- The server --- */

/* Does nothing: proves that the server answers. */
qorlix_status QORLIX_CALL qorlix_no_operation(qorlix_client* client) QORLIX_NOEXCEPT;
/* With the confirmation, 253, the server closes all connections and ends; QORLIX_OK then. With any
 * other value it answers 1255 and goes on. */
qorlix_status QORLIX_CALL qorlix_stop_server(qorlix_client* client,
                                             uint32_t confirmation) QORLIX_NOEXCEPT;

/* --- The registry, below HKEY_LOCAL_MACHINE; changes within SOFTWARE\Vesmark\NORVA only (5) --- */

qorlix_status QORLIX_CALL qorlix_reg_create_key(qorlix_client* client,
                                                const char* key) QORLIX_NOEXCEPT;
/* Removes what lies below the key under the key's own path again (key\key); the key stays. */
qorlix_status QORLIX_CALL qorlix_reg_del_key(qorlix_client* client,
                                             const char* key) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_reg_set_value(qorlix_client* client, const char* key,
                                               const char* name, const char* text) QORLIX_NOEXCEPT;
/* The length is that of the data, less one if there is any: of a text, without its terminator. */
qorlix_status QORLIX_CALL qorlix_reg_get_value(qorlix_client* client, const char* key,
                                               const char* name,
                                               qorlix_text_value* data) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_reg_del_value(qorlix_client* client, const char* key,
                                               const char* name) QORLIX_NOEXCEPT;
/* One entry; 259 behind the last one. */
qorlix_status QORLIX_CALL qorlix_reg_enum_key(qorlix_client* client, const char* key,
                                              uint32_t index,
                                              qorlix_text_value* name) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_reg_enum_value(qorlix_client* client, const char* key,
                                                uint32_t index, qorlix_text_value* name,
                                                qorlix_text_value* data) QORLIX_NOEXCEPT;

/* The one root that is served: HKEY_LOCAL_MACHINE. Every other one is answered with 5. */
#define QORLIX_ROOT_LOCAL_MACHINE 0x80000002u
qorlix_status QORLIX_CALL qorlix_reg_create_key_base(qorlix_client* client, uint32_t root,
                                                     const char* key) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_reg_del_key_base(qorlix_client* client, uint32_t root,
                                                  const char* key) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_reg_set_value_base(qorlix_client* client, uint32_t root,
                                                    const char* key, const char* name,
                                                    const char* text) QORLIX_NOEXCEPT;

/* --- Boards: results are those of the board library, 8602 and 8604 --- */

/* Which board is meant. */
typedef struct qorlix_board_selection {
  const char* board;
  const char* board_map;
  const char* device_id;
  const char* hardware_instance_id;
} qorlix_board_selection;

/* Of every answer: `value` is the number behind the texts, where the command has one. `asked_again`
 * is 1 when the texts did not fit a reply and came when less room was asked for: they may be cut.
 */
typedef struct qorlix_board {
  qorlix_text_value board, board_map, adapter;
  uint32_t asked_again;
} qorlix_board;
typedef struct qorlix_inst_board {
  qorlix_text_value board, device_id, net_type, hardware_id, hardware_instance_id, board_map;
  uint32_t state;
  uint32_t asked_again;
} qorlix_inst_board;
typedef struct qorlix_available_board {
  qorlix_text_value board, device_id;
  uint32_t value;
  uint32_t asked_again;
} qorlix_available_board;
typedef struct qorlix_adapter {
  qorlix_text_value adapter_name, board_map;
  uint32_t value;
  uint32_t asked_again;
} qorlix_adapter;
typedef struct qorlix_configuration {
  qorlix_text_value configuration, protocol_type, layer4_protocol, unit;
  uint32_t asked_again;
} qorlix_configuration;

/* The enumerations: one entry; 259 behind the last one. */
qorlix_status QORLIX_CALL qorlix_bc_enum_board(qorlix_client* client, const char* device_id,
                                               uint32_t index, qorlix_board* entry) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_enum_inst_board(qorlix_client* client, uint32_t index,
                                                    qorlix_inst_board* entry) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_enum_available_board(
    qorlix_client* client, uint32_t index, qorlix_available_board* entry) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_enum_adapters(qorlix_client* client, uint32_t index,
                                                  qorlix_adapter* entry) QORLIX_NOEXCEPT;
/* A null selection is four empty texts, here and below. */
qorlix_status QORLIX_CALL qorlix_bc_enum_configuration(qorlix_client* client, uint32_t index,
                                                       const qorlix_board_selection* of,
                                                       qorlix_configuration* entry) QORLIX_NOEXCEPT;

qorlix_status QORLIX_CALL qorlix_bc_board_get_map(qorlix_client* client, const char* device_id,
                                                  const char* adapter, const char* hardware_id,
                                                  qorlix_text_value* board_map) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_get_board_info(qorlix_client* client, uint32_t info_type,
                                                   const qorlix_board_selection* of,
                                                   qorlix_text_value* value) QORLIX_NOEXCEPT;
/* Bytes rather than a text. The selection's device id is not sent. */
qorlix_status QORLIX_CALL qorlix_bc_get_board_info_ex(qorlix_client* client, uint32_t info_type,
                                                      const qorlix_board_selection* of,
                                                      qorlix_text_value* data) QORLIX_NOEXCEPT;

qorlix_status QORLIX_CALL qorlix_bc_scan(qorlix_client* client) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_create_all_logdevices(qorlix_client* client) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_has_uninitialized_instances(qorlix_client* client)
    QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_update_log_devices_for_device(
    qorlix_client* client, const char* device_id, const char* hardware_id) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_bc_plausibilitaet(qorlix_client* client) QORLIX_NOEXCEPT;

/* --- Devices; ids have at most 259 bytes --- */

qorlix_status QORLIX_CALL qorlix_register_for_device_change_notifications(
    qorlix_client* client, const char* device_id, const qorlix_guid* guid) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_unregister_for_device_change_notifications(
    qorlix_client* client, const char* device_id, const qorlix_guid* guid) QORLIX_NOEXCEPT;

typedef struct qorlix_device_change {
  qorlix_text_value change; /* may hold several texts, each with its zero */
  qorlix_guid interface_class;
  uint32_t kind;
} qorlix_device_change;
qorlix_status QORLIX_CALL qorlix_get_device_change(qorlix_client* client, const char* device_id,
                                                   qorlix_device_change* change) QORLIX_NOEXCEPT;

/* The option without which a device is looked up. */
#define QORLIX_NO_OPTION 0xFFFFFFFFu
/* status: DN_ bits; problem: a CM_PROB_ number. 0 also for a device that nobody knows. */
qorlix_status QORLIX_CALL qorlix_get_device_state(qorlix_client* client, const char* hardware_id,
                                                  uint32_t option, uint32_t* status,
                                                  uint32_t* problem) QORLIX_NOEXCEPT;

/* --- What changes the machine. It takes as long as the library behind it does, and the server
 *     serves nobody meanwhile; a call whose time runs out is not undone. Texts: 259 bytes. --- */

qorlix_status QORLIX_CALL qorlix_install(qorlix_client* client, const char* device_id,
                                         const char* language_extension) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_deinstall(qorlix_client* client, const char* device_id,
                                           const char* language_extension,
                                           const char* board) QORLIX_NOEXCEPT;

/* 0 is also the answer when the library is not there. `library_ran`, which may be null here and
 * below, is 1 when the second reply came that the server sends once the library is loaded, 0
 * otherwise. */
qorlix_status QORLIX_CALL qorlix_install_wdm_driver(qorlix_client* client, const char* service,
                                                    const char* inf_file, const char* third,
                                                    uint32_t mode,
                                                    uint32_t* library_ran) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_run_online_panel(qorlix_client* client,
                                                  uint32_t* library_ran) QORLIX_NOEXCEPT;

/* Starts a restart in the background, 0 says no more. When it ends, the server sets the event,
 * which has to exist by then; its result is there once, and 259 before and after. */
qorlix_status QORLIX_CALL qorlix_silent_restart(qorlix_client* client, const char* log_device,
                                                const char* event_name) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_get_silent_restart_result(qorlix_client* client,
                                                           const char* event_name) QORLIX_NOEXCEPT;

/* An IPv4 address as the wire has it. */
uint32_t QORLIX_CALL qorlix_ip_address(uint8_t a, uint8_t b, uint8_t c, uint8_t d) QORLIX_NOEXCEPT;
/* nte_context names the address to qorlix_del_ip_address. */
qorlix_status QORLIX_CALL qorlix_add_ip_address(qorlix_client* client, uint32_t address,
                                                uint32_t mask, uint32_t interface_index,
                                                uint32_t* nte_context,
                                                uint32_t* nte_instance) QORLIX_NOEXCEPT;
qorlix_status QORLIX_CALL qorlix_del_ip_address(qorlix_client* client,
                                                uint32_t nte_context) QORLIX_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif /* CLIENT_CAPI_QORLIXCOMMANDS_H_ */
