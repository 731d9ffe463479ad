/* Calls every function of the C interface, also with bad input, and prints what each call returns.
 * Usage: calls SERVER, in a directory with the directories "kept", "withdrawn" and "locked". The
 * server must accept connections and never answer. */
#include <pthread.h>
#include <qel_analytics.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#define SHOW(call) show(#call, call)
/* For failures whose text is that of the system. */
#define SHOW_STATUS(call) printf("%s\n  %d\n", #call, (int)(call))
#define MEGABYTE 1000000

static _Atomic qel_analytics_handle current; /* of which the callbacks send */
static qel_analytics_handle client;
static atomic_int notified_in_permission = -1, joined_in_permission = -1;
static atomic_int released_in_permission = -1, notified_in_log = -1;
static int created_in_environment = -1;
static atomic_int is_overflown, may_log_return, may_send, sending_errors;
static _Thread_local int fills_queue;
static const char* environment_text;

static void show(const char* call, int32_t status) {
  printf("%s\n", call);
  if (status != QEL_ANALYTICS_OK) {
    printf("  %d, %s\n", (int)status, qel_analytics_last_error());
  }
}

static int32_t notify(const char* json) { return qel_analytics_notify(client, json); }

static int32_t allow(void* context) {
  (void)context;
  return 1;
}

static int32_t allow_and_call_back(void* context) {
  if (current != 0 && !atomic_flag_test_and_set((atomic_flag*)context)) {
    joined_in_permission = qel_analytics_join(current);
    released_in_permission = qel_analytics_release(current);
    notified_in_permission = qel_analytics_application_stopped(current, "in a permission");
  }
  return 1;
}

static void log_and_call_back(void* context, int32_t level, const char* logger,
                              const char* message) {
  (void)context;
  sending_errors += strcmp(logger, "qel.log.analytics.Client") == 0;
  if (level == QEL_ANALYTICS_LOG_ERROR && strcmp(logger, "qel.assert") == 0 &&
      strstr(message, "Was stop called before perform?") != NULL) {
    notified_in_log = qel_analytics_application_stopped(current, "in the log");
  }
}

static const char* describe(void* context) {
  (void)context;
  return environment_text;
}

static qel_analytics_parameters sound_parameters(const char* directory) {
  static char long_name[2 * 256 + 1];
  qel_analytics_parameters parameters;
  size_t at;
  for (at = 0; at < 2 * 256; at += 2) {
    memcpy(long_name + at, "\xD1\x84", 2); /* a letter that no western code page has */
  }
  memset(&parameters, 0, sizeof(parameters));
  parameters.struct_size = sizeof(parameters);
  parameters.directory = directory;
  parameters.installation_id = long_name;
  parameters.session_id = "0A1B2C3D-0000-4000-8000-0123456789AB";
  parameters.is_support_allowed = allow;
  return parameters;
}

static const char* describe_and_call_back(void* context) {
  const qel_analytics_parameters parameters = sound_parameters("kept");
  qel_analytics_handle other;
  created_in_environment = qel_analytics_create(&parameters, &other);
  return describe(context);
}

/* Creates a client after one member was changed. The client must be refused. */
#define REFUSED(change)                                                  \
  do {                                                                   \
    qel_analytics_parameters given = sound_parameters("kept");           \
    given.change;                                                        \
    show("create with " #change, qel_analytics_create(&given, &client)); \
  } while (0)

static void show_refused_parameters(void) {
  qel_analytics_parameters sound = sound_parameters("kept");
  SHOW(qel_analytics_create(NULL, &client));
  SHOW(qel_analytics_create(&sound, NULL));
  REFUSED(struct_size = 0);
  REFUSED(struct_size -= 1);
  REFUSED(struct_size = offsetof(qel_analytics_parameters, environment));
  REFUSED(struct_size = 1000000000);
  REFUSED(directory = NULL);
  REFUSED(directory = "");
  REFUSED(directory = "\xFF");
  REFUSED(installation_id = NULL);
  REFUSED(session_id = "12");
  REFUSED(server_user = "a:b");
  REFUSED(retention_seconds = UINT64_MAX);
  REFUSED(log_level = 5);
  REFUSED(server_host = "analytics.qel.example:443");
  show("this machine", qel_analytics_this_machine("CAD", "\xFF") == NULL);
  environment_text = "{\"Os\": {}}";
  REFUSED(environment = describe);
  environment_text = "{\"InstalledApplications\": [{\"UserFiles\": [\"a\", 1]}]}";
  REFUSED(environment = describe);
  environment_text = "\xFF";
  REFUSED(environment = describe);
}

/* A struct of a later version, with one more member. */
struct newer {
  qel_analytics_parameters known;
  uint64_t added;
};

static void show_other_sizes(void) {
  struct newer newer = {sound_parameters("kept"), 1};
  newer.known.log_file = "kept"; /* a directory */
  SHOW_STATUS(qel_analytics_create(&newer.known, &client));
  newer.known = sound_parameters("nowhere");
  newer.known.installation_id = "of a client that was never created";
  SHOW_STATUS(qel_analytics_create(&newer.known, &client));
  newer.known = sound_parameters("kept");
  newer.known.struct_size = sizeof(newer);
  SHOW(qel_analytics_create(&newer.known, &client));
  newer.added = 0;
  SHOW(qel_analytics_create(&newer.known, &client));
  SHOW(qel_analytics_release(client));
}

static void show_bad_notifications(void) {
  char* text = malloc(MEGABYTE + 1);
  SHOW(notify(NULL));
  SHOW(notify("{\"notify\": "));
  SHOW(notify("[]"));
  SHOW(notify("{\"notify\": \"onTea\"}"));
  SHOW(notify("{\"notify\": \"onProjectClosed\", \"project\": 1}"));
  SHOW(notify("{\"notify\": \"onProjectClosed\", \"project\": \"\xFF\"}"));
  SHOW(notify("{\"wait\": 1}"));
  memset(text, '[', MEGABYTE);
  text[MEGABYTE] = '\0';
  SHOW(notify(text));
  memset(text, ' ', MEGABYTE);
  memcpy(text, "{\"notify\": \"onProjectClosed\", \"project\": \"", 42);
  memcpy(text + MEGABYTE - 8, "a MB\"}", 6);
  SHOW(notify(text));
  free(text);
}

static void show_typed_calls(void) {
  const qel_analytics_detail details[] = {{"Days", "14"}, {"Size", "\xD1\x84"}, {"Days", "15"}};
  const qel_analytics_detail bad[] = {{"Days", NULL}, {"\xC3", ""}};
  SHOW(qel_analytics_general_event(client, "a", "b", "c", details, 3));
  SHOW(qel_analytics_general_event(client, "", "", "", NULL, 0));
  SHOW(qel_analytics_general_event(client, NULL, "b", "c", NULL, 0));
  SHOW(qel_analytics_general_event(client, "a", "b", "c", NULL, 1));
  SHOW(qel_analytics_general_event(client, "a", "b", "c", details, UINT32_MAX));
  SHOW(qel_analytics_general_event(client, "a", "b", "c", &bad[0], 1));
  SHOW(qel_analytics_general_event(client, "a", "b", "c", &bad[1], 1));
  SHOW(qel_analytics_command_started(client, "1", "Wall", 4, details, 1));
  SHOW(qel_analytics_command_stopped(client, "1", "Wall", -1, NULL, 0));
  SHOW(qel_analytics_command_stopped(client, "1", "Wall", 0, NULL, 0));
  SHOW(qel_analytics_application_started(client, "1.0"));
  SHOW(qel_analytics_application_stopped(client, "1.0"));
  SHOW(qel_analytics_application_crashed(client, "1.0", -1073741819));
  SHOW(notify("{\"notify\": \"onApplicationCrashed\", \"text\": \"1.0\", \"code\": 3221225477}"));
  SHOW(qel_analytics_application_crashed(client, "\xFF", 0));
}

/* Issues that are added twice are recorded once. */
static void* add_issues(void* unused) {
  int number;
  for (number = 0; number < 300; ++number) {
    char text[300];
    snprintf(text, sizeof(text),
             "{\"notify\": \"issueAdded\", \"flag\": false, \"issue\": {\"id\": "
             "\"00000000-0000-4000-8000-%012d\", \"priority\": 1, \"description\": \"d\", "
             "\"timestamp\": 1, \"solvers\": 0, \"message\": null, \"attributes\": []}}",
             number);
    if (notify(text) != QEL_ANALYTICS_OK) {
      printf("issueAdded has failed: %s\n", qel_analytics_last_error());
    }
  }
  return unused;
}

static void show_session(const char* server) {
  atomic_flag called_back = ATOMIC_FLAG_INIT;
  pthread_t other;
  time_t begin;
  qel_analytics_parameters parameters = sound_parameters("kept");
  parameters.session_id = "0A1B2C3D-0000-4000-8000-0123456789AC";
  SHOW(qel_analytics_create(&parameters, &client));
  parameters.session_id = NULL;
  parameters.release_limit = 1000;
  parameters.connect_to = server;
  parameters.context = &called_back;
  parameters.is_support_allowed = allow_and_call_back;
  parameters.is_sending_allowed = allow;
  environment_text =
      "{\"CurrentActiveApplication\": {\"Name\": \"CAD\"}, \"InstalledApplications\""
      ": [{\"Name\": \"Viewer\"}, {\"Name\": \"CAD\", \"WebUpdate\": \"on\"}]}";
  parameters.environment = describe_and_call_back;
  SHOW(qel_analytics_create(&parameters, &client));
  current = client;
  printf("create in the environment: %d\n", created_in_environment);
  show_bad_notifications();
  show_typed_calls();
  pthread_create(&other, NULL, add_issues, NULL);
  add_issues(NULL);
  pthread_join(other, NULL);
  SHOW(qel_analytics_join(client));
  SHOW(qel_analytics_join(client));
  printf("in a permission: notify %d, join %d, release %d\n", notified_in_permission,
         joined_in_permission, released_in_permission);
  begin = time(NULL);
  SHOW(qel_analytics_release(client));
  printf("released %s\n", time(NULL) - begin <= 3 ? "in time" : "too late");
  SHOW(notify("{\"notify\": \"onProjectClosed\", \"project\": \"\"}"));
  SHOW(qel_analytics_release(client));
}

static int32_t allow_later(void* context) {
  (void)context;
  return may_send;
}

/* The server never answers, so the withdrawal finds an upload in progress. */
static void show_withdrawal(const char* server) {
  qel_analytics_handle first = client;
  qel_analytics_parameters parameters = sound_parameters("withdrawn");
  FILE* database;
  time_t end = time(NULL) + 10;
  parameters.log = log_and_call_back;
  parameters.is_sending_allowed = allow_later;
  parameters.server_host = "staging.qel.example";
  parameters.connect_to = server;
  SHOW(qel_analytics_create(&parameters, &client));
  current = client;
  printf("handle %s\n", client != first ? "new" : "used before");
  SHOW(qel_analytics_notify(first, "{\"notify\": \"onProjectClosed\", \"project\": \"\"}"));
  SHOW(qel_analytics_application_started(client, "1.0"));
  SHOW(qel_analytics_stop_sending(client)); /* logs that nothing was started */
  while (notified_in_log == -1 && time(NULL) < end) {
    qel_analytics_join(client);
  }
  printf("in the log: notify %d\n", notified_in_log);
  may_send = 1;
  SHOW(qel_analytics_application_started(client, "1.0"));
  SHOW(qel_analytics_join(client));
  SHOW(qel_analytics_start_sending(client));
  usleep(300000);
  SHOW(qel_analytics_withdraw(client));
  printf("errors of sending: %d\n", sending_errors);
  database = fopen("withdrawn/SupportDatabase.db", "rb");
  printf("database %s\n", database == NULL ? "removed" : "left");
  SHOW(qel_analytics_remove_recordings("withdrawn"));
  SHOW_STATUS(qel_analytics_remove_recordings("nowhere"));
}

static int32_t allow_after_overflow(void* context) {
  (void)context;
  while (!fills_queue && !is_overflown) {
    usleep(10000);
  }
  return 1;
}

static void log_until_released(void* context, int32_t level, const char* logger,
                               const char* message) {
  (void)context, (void)level, (void)logger, (void)message;
  while (!may_log_return) {
    usleep(10000);
  }
}

/* Another program keeps the support database of "locked" locked. */
static void show_losses(void) {
  int32_t status = QEL_ANALYTICS_OK;
  qel_analytics_parameters parameters = sound_parameters("withdrawn");
  parameters.release_limit = 500;
  parameters.is_support_allowed = allow_after_overflow;
  parameters.log = log_until_released;
  SHOW(qel_analytics_create(&parameters, &client));
  fills_queue = 1;
  while (status == QEL_ANALYTICS_OK) {
    status = qel_analytics_application_started(client, "");
  }
  is_overflown = 1;
  show("overflow", status);
  SHOW(qel_analytics_join(client));
  SHOW(qel_analytics_release(client));
  may_log_return = 1;
  parameters = sound_parameters("locked");
  parameters.release_limit = 500;
  SHOW(qel_analytics_create(&parameters, &client));
  SHOW(qel_analytics_application_started(client, ""));
  SHOW_STATUS(qel_analytics_release(client));
}

int main(int count, char** values) {
  if (count != 2) {
    return 2;
  }
  printf("last error: \"%s\"\n", qel_analytics_last_error());
  SHOW(qel_analytics_notify(0, "{}"));
  SHOW(notify("{\"notify\": \"onProjectClosed\", \"project\": \"\"}"));
  SHOW(qel_analytics_release(1));
  SHOW(qel_analytics_join(0x7FFFFFFF12345678));
  show_refused_parameters();
  show_other_sizes();
  show_session(values[1]);
  show_withdrawal(values[1]);
  show_losses();
  printf("statuses: %s, %s, %s\n", qel_analytics_status_text(QEL_ANALYTICS_OK),
         qel_analytics_status_text(QEL_ANALYTICS_CALLBACK_RUNNING), qel_analytics_status_text(-1));

  /* The process ends with a client that it has not released. */
  {
    qel_analytics_parameters parameters = sound_parameters("kept");
    parameters.is_support_allowed = NULL;
    parameters.is_sending_allowed = allow;
    parameters.connect_to = values[1];
    SHOW(qel_analytics_create(&parameters, &client));
    SHOW(qel_analytics_application_started(client, "left running"));
  }
  return 0;
}
