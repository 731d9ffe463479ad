/* Records one event and sends it. Usage: session DIRECTORY SERVER ADDRESS AUTHORITY SECRET_FILE */
#include <qel_analytics.h>
#include <stdio.h>
#include <string.h>

static int32_t always_allowed(void* context) {
  (void)context;
  return 1;
}

static const char* describe_machine(void* context) {
  (void)context;
  return qel_analytics_this_machine("Sample", "1.0");
}

static void print_message(void* context, int32_t level, const char* logger, const char* message) {
  (void)context;
  fprintf(stderr, "level %d, %s: %s\n", (int)level, logger, message);
}

/* Prints why a call has failed. Returns whether it has succeeded. */
static int succeeded(const char* call, int32_t status) {
  if (status != QEL_ANALYTICS_OK) {
    fprintf(stderr, "%s: %s: %s\n", call, qel_analytics_status_text(status),
            qel_analytics_last_error());
  }
  return status == QEL_ANALYTICS_OK;
}

static int read_line(const char* name, char* line, int size) {
  FILE* file = fopen(name, "r");
  const int is_read = file != NULL && fgets(line, size, file) != NULL;
  if (file != NULL) {
    fclose(file);
  }
  line[is_read ? strcspn(line, "\r\n") : 0] = '\0';
  return is_read;
}

static int record(qel_analytics_handle client) {
  const qel_analytics_detail details[] = {{"Days", "14"}};
  return succeeded("event", qel_analytics_general_event(client, "License", "Network", "Borrowed",
                                                        details, 1)) &&
         succeeded("notify", qel_analytics_notify(client,
                                                  "{\"notify\": \"onHelpAction\", "
                                                  "\"name\": \"Start page\", \"details\": {}}"));
}

int main(int count, char** values) {
  char secret[256];
  qel_analytics_handle client = 0;
  qel_analytics_parameters parameters;
  int is_recorded;

  if (count != 6 || !read_line(values[5], secret, sizeof(secret))) {
    fprintf(stderr, "usage: session DIRECTORY SERVER ADDRESS AUTHORITY SECRET_FILE\n");
    return 2;
  }
  memset(&parameters, 0, sizeof(parameters));
  parameters.struct_size = sizeof(parameters);
  parameters.directory = values[1];
  parameters.installation_id = "consumer";
  parameters.server_host = values[2];
  parameters.connect_to = values[3]; /* for a trial only */
  parameters.ca_file = values[4];    /* for a trial only */
  parameters.server_user = "consumer";
  parameters.server_secret = secret;
  parameters.is_sending_allowed = always_allowed;
  parameters.is_support_allowed = always_allowed;
  parameters.environment = describe_machine;
  parameters.log = print_message;
  if (!succeeded("create", qel_analytics_create(&parameters, &client))) {
    return 1;
  }
  is_recorded = record(client);
  return succeeded("release", qel_analytics_release(client)) && is_recorded ? 0 : 1;
}
