#ifndef QEL_ANALYTICS_H
#define QEL_ANALYTICS_H

// This file is C.
// NOLINTBEGIN(modernize-*, readability-identifier-naming)
#include <stdint.h>

/// @file
/// The analytics client for programs in C, and in languages that can call C.
///
/// **Texts** are UTF-8 and end with a zero byte. The library copies all arguments during the call.
///
/// **Threads.** Every function may be called on any thread. The functions that create, join,
/// release or withdraw a client, or start or stop sending, wait for each other. Notifications wait
/// only for other notifications. A thread must not be cancelled (`pthread_cancel`) during a call.
///
/// **Errors.** Most functions return a status, which is 0 on success. `qel_analytics_last_error`
/// then has a text with the details. No C++ exception leaves a function.
///
/// **Process.** A process can have one client at a time. A process that ends without releasing it
/// loses the notifications of about the last second, and sends the rest in its next session.

#if defined(_WIN32) && defined(QelC_EXPORTS)
#define QEL_ANALYTICS_API __declspec(dllexport)
#elif defined(_WIN32)
#define QEL_ANALYTICS_API __declspec(dllimport)
#else
/// Marks a function that the library exports.
#define QEL_ANALYTICS_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif
#pragma pack(push, 8)

/// @name Status
/// The result of a function. Later versions may add values.
/// @{
/// The function has succeeded.
#define QEL_ANALYTICS_OK 0
/// An argument is null, not UTF-8 or outside of its range. The text names it.
#define QEL_ANALYTICS_INVALID_ARGUMENT 1
/// The handle is null, was released, or does not come from `qel_analytics_create`.
#define QEL_ANALYTICS_INVALID_HANDLE 2
/// A notification or the environment is invalid. The text names the field.
#define QEL_ANALYTICS_INVALID_JSON 3
/// This process already has a client.
#define QEL_ANALYTICS_ALREADY_CREATED 4
/// The function must not be called by a callback.
#define QEL_ANALYTICS_IN_CALLBACK 5
/// Another thread has not completed its notification in time. The call may be repeated.
#define QEL_ANALYTICS_BUSY 6
/// The client records nothing more until it is released and created again: more than 10,000 records
/// waited to be stored, or memory was exhausted. The records that waited are lost.
#define QEL_ANALYTICS_STORAGE_ENDED 7
/// The operation failed, for example because of the directory. The text has the reason.
#define QEL_ANALYTICS_FAILED 8
/// There is not enough memory.
#define QEL_ANALYTICS_OUT_OF_MEMORY 9
/// The client has ended, but the log callback has not returned. It still uses the context. Other
/// failures are then only in the log.
#define QEL_ANALYTICS_CALLBACK_RUNNING 10
/// Records were lost, for example because the disk is full, another process locks a database, or
/// the database for sending has its largest size. The text has the numbers. Each loss is reported
/// once.
#define QEL_ANALYTICS_NOT_STORED 11
/// @}

/// @name Log levels
/// @{
#define QEL_ANALYTICS_LOG_DEBUG 1    ///< details for developers
#define QEL_ANALYTICS_LOG_INFO 2     ///< normal events
#define QEL_ANALYTICS_LOG_WARNING 3  ///< the client can continue, but something is wrong
#define QEL_ANALYTICS_LOG_ERROR 4    ///< rows are lost, or cannot be sent for now
/// @}

/// Identifies a client; 0 means none. A process never uses a value again.
typedef uint64_t qel_analytics_handle;

/// A pair of texts that describes a notification. Neither may be null.
typedef struct qel_analytics_detail {
  const char* key;    ///< if a key is repeated, its last value counts
  const char* value;  ///< may be empty
} qel_analytics_detail;

/// Returns whether an action is allowed: 0 means no, any other value means yes.
typedef int32_t (*qel_analytics_permission)(void* context);
/// Receives a message of at least the level `log_level`. The texts are valid during the call.
typedef void (*qel_analytics_log)(void* context, int32_t level, const char* logger,
                                  const char* message);
/// Returns the members of the environment record as a JSON object, or null. The text must stay
/// valid until `qel_analytics_create` returns.
typedef const char* (*qel_analytics_environment)(void* context);

/// The settings of a client. Set all bytes to zero, then set `struct_size` and what you need. Null
/// and 0 select the default of a member.
///
/// **Versions.** Later versions append members. The shorter struct of an older program is accepted,
/// if it has all members up to `environment`. A longer struct of a newer program is accepted if the
/// bytes that are unknown here are zero.
///
/// **Callbacks** are called on threads of the library and on threads that call it, possibly at the
/// same time. They must return soon, must not throw or jump out, and must not wait for a thread
/// that calls the library. Every join, release and withdrawal waits for a permission callback. They
/// may send notifications; other functions that take a handle then return
/// `QEL_ANALYTICS_IN_CALLBACK`. No callback is called after the client has ended.
typedef struct qel_analytics_parameters {
  uint32_t struct_size;  ///< `sizeof(qel_analytics_parameters)`
  /// The longest time that `qel_analytics_release` may wait, in milliseconds. Default: 5000. A
  /// permission callback or a disk that hangs can extend it.
  uint32_t release_limit;
  /// Existing directory of the databases. Only one process at a time can use it. Required.
  const char* directory;
  /// Identifies the installation. A process keeps the first value. Required.
  const char* installation_id;
  /// Identifies the run of the program, as a GUID. A process keeps the first value. Default: the
  /// value of an earlier client of this process, or else a new one.
  const char* session_id;
  /// The user at the server, without a colon. Default: the server asks for no user.
  const char* server_user;
  /// The secret of the user. It is never stored or logged.
  const char* server_secret;
  /// PEM file of the only certificates to trust. Default: those of the system.
  const char* ca_file;
  /// Address as HOST:PORT to connect to, instead of the server's own. The certificate is still
  /// checked against the server's name. `ca_file`, `connect_to` and `proxy` are first used when the
  /// client sends. The log reports if one is wrong.
  const char* connect_to;
  /// URL of a proxy. Default: none, whatever the environment variables contain.
  const char* proxy;
  /// The age in seconds at which rows for support are deleted, at most 3,155,760,000. Default:
  /// never.
  uint64_t retention_seconds;
  /// Log file. Default: none.
  const char* log_file;
  /// The lowest level that is logged. Default: `QEL_ANALYTICS_LOG_WARNING`.
  int32_t log_level;
  int32_t reserved;  ///< must be 0
  /// Passed to every callback.
  void* context;
  /// Whether the customer has agreed that rows are stored and sent. Default: not allowed. Called
  /// before every write. Sending starts in `qel_analytics_create` if this returns yes there.
  qel_analytics_permission is_sending_allowed;
  /// Whether rows may be stored for support. Default: not allowed. Called before every write.
  qel_analytics_permission is_support_allowed;
  /// Receives what is logged, on a thread of the log. Default: messages go to the log file. If
  /// there is none either, they go to standard error.
  qel_analytics_log log;
  /// Describes the machine. Called once, by `qel_analytics_create`. Default: no description.
  qel_analytics_environment environment;
  /// The host name of the server, as in its certificate; not an address. Default: the name that was
  /// compiled in. Added after the first version.
  const char* server_host;
} qel_analytics_parameters;

/// Creates a client, which records and sends until it is released. Stores its handle in `handle`,
/// or 0 if the function fails.
QEL_ANALYTICS_API int32_t qel_analytics_create(const qel_analytics_parameters* parameters,
                                               qel_analytics_handle* handle);

/// Stores and sends what was recorded, and ends the client. The handle is then invalid, except
/// after `QEL_ANALYTICS_BUSY` and `QEL_ANALYTICS_IN_CALLBACK`. Waits at most for `release_limit`.
/// What was not sent then stays on the disk for the next session; only the log reports it. Returns
/// `QEL_ANALYTICS_NOT_STORED` if records were lost and `qel_analytics_join` has not reported them.
QEL_ANALYTICS_API int32_t qel_analytics_release(qel_analytics_handle handle);

/// For a customer who withdraws the consent. Ends sending at once, also an upload in progress, then
/// ends the client and removes the databases of its directory. The handle is then invalid; do not
/// release it. After `QEL_ANALYTICS_BUSY`, the client still records, but sends nothing more: call
/// this function again. After `QEL_ANALYTICS_FAILED` or `QEL_ANALYTICS_CALLBACK_RUNNING`, the
/// client has ended, and `qel_analytics_remove_recordings` may be tried until it succeeds. The log
/// file stays.
QEL_ANALYTICS_API int32_t qel_analytics_withdraw(qel_analytics_handle handle);

/// Removes the databases of a directory. Fails if a client uses the directory, also for a short
/// time after the client has ended. Waits up to two seconds for such a client, so a callback must
/// not call it.
QEL_ANALYTICS_API int32_t qel_analytics_remove_recordings(const char* directory);

/// Waits until all earlier notifications are stored. This can take as long as another process
/// locks a database. Returns `QEL_ANALYTICS_NOT_STORED` if records were lost since the last join.
QEL_ANALYTICS_API int32_t qel_analytics_join(qel_analytics_handle handle);

/// Starts sending, or starts it again after a failure. If sending is running, waits for the end of
/// its current upload.
QEL_ANALYTICS_API int32_t qel_analytics_start_sending(qel_analytics_handle handle);

/// Sends once more, then stops sending. Does not wait until this is done. If sending was never
/// started, only a message is logged.
QEL_ANALYTICS_API int32_t qel_analytics_stop_sending(qel_analytics_handle handle);

/// Records one notification, a JSON object such as
/// `{"notify": "onHelpAction", "name": "Start page", "details": {}}`.
QEL_ANALYTICS_API int32_t qel_analytics_notify(qel_analytics_handle handle, const char* json);

/// @name Common notifications
/// The same as `qel_analytics_notify` with the notification of a similar name. `details` has
/// `detail_count` elements, at most 10,000, and may be null if there are none. The other texts must
/// not be null.
/// @{
QEL_ANALYTICS_API int32_t qel_analytics_general_event(qel_analytics_handle handle,
                                                      const char* category, const char* subcategory,
                                                      const char* event,
                                                      const qel_analytics_detail* details,
                                                      uint32_t detail_count);
/// `id` pairs the start and the stop of a command. `location` is the place of invocation: 0 code, 1
/// grip, 2 command line, 3 accelerator, 4 menu, 5 context toolbar, 6 fixed toolbar, 7 popup, 8
/// object popup, 9 status bar, 10 view toolbar.
QEL_ANALYTICS_API int32_t qel_analytics_command_started(qel_analytics_handle handle, const char* id,
                                                        const char* text, uint32_t location,
                                                        const qel_analytics_detail* details,
                                                        uint32_t detail_count);
/// `cancelled` is 0 if the command was completed.
QEL_ANALYTICS_API int32_t qel_analytics_command_stopped(qel_analytics_handle handle, const char* id,
                                                        const char* text, int32_t cancelled,
                                                        const qel_analytics_detail* details,
                                                        uint32_t detail_count);
QEL_ANALYTICS_API int32_t qel_analytics_application_started(qel_analytics_handle handle,
                                                            const char* text);
QEL_ANALYTICS_API int32_t qel_analytics_application_stopped(qel_analytics_handle handle,
                                                            const char* text);
/// Then call `qel_analytics_join`, so that the record is stored. The crashed thread may hold locks
/// that these functions need, so another thread must call both. Wait for it only for a limited
/// time.
QEL_ANALYTICS_API int32_t qel_analytics_application_crashed(qel_analytics_handle handle,
                                                            const char* text, int32_t code);
/// @}

/// A description of this machine and of the program, for the callback `environment`: system,
/// language, screen, graphics card, processor and memory, but no name of a user or a machine.
/// Unknown facts are empty. Returns null if a text is null or not UTF-8. Valid until the thread
/// calls this function again or ends. A callback may call it.
QEL_ANALYTICS_API const char* qel_analytics_this_machine(const char* program, const char* version);

/// The text of the last failure on the calling thread, at most 511 bytes; empty if there was none.
/// Never null. Valid until the thread calls the library again or ends.
QEL_ANALYTICS_API const char* qel_analytics_last_error(void);

/// A short text for a status. Never null, also for an unknown status. Valid for ever.
QEL_ANALYTICS_API const char* qel_analytics_status_text(int32_t status);

/// The version of the library, such as "0.1.0". Valid for ever.
QEL_ANALYTICS_API const char* qel_analytics_version(void);

#pragma pack(pop)
#ifdef __cplusplus
}
#endif
// NOLINTEND(modernize-*, readability-identifier-naming)

#endif
