/* A PXI service library for the tests. It does what a file in the folder VARMEX_TEST_PLACE tells it
 * and records every call in another; WITHOUT_... leaves a function out. */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct tFixedStatus {
  uint32_t size;
  int32_t code;
  char component[10];
  char file[101];
  uint32_t line;
  uint64_t extra;
  char padding[72];
} tFixedStatus;

static int session;

static FILE* openInPlace(const char* name, const char* mode) {
  char path[1024];
  const char* const place = getenv("VARMEX_TEST_PLACE");
  if (!place) return NULL;
  snprintf(path, sizeof path, "%s/%s", place, name);
  return fopen(path, mode);
}

static void record(const char* text) {
  FILE* const log = openInPlace("service.log", "a");
  if (!log) return;
  fprintf(log, "%s\n", text);
  fclose(log);
}

/* The number that the control file gives for a name, 0 without one. */
static int32_t told(const char* name) {
  char key[64];
  int number = 0;
  int32_t result = 0;
  FILE* const control = openInPlace("service.control", "r");
  if (!control) return 0;
  while (fscanf(control, "%63s %d", key, &number) == 2) {
    if (strcmp(key, name) == 0) result = number;
  }
  fclose(control);
  return result;
}

static void report(const char* name, tFixedStatus* status) {
  if (status->size != sizeof *status || status->code != 0) record("bad status");
  status->code = told(name);
  if (status->code == 0) return;
  strcpy(status->component, "dunmor");
  strcpy(status->file, name);
  status->line = 7;
}

__attribute__((constructor)) static void load(void) { record("load"); }
__attribute__((destructor)) static void unload(void) { record("unload"); }

#ifndef WITHOUT_initialize
__attribute__((visibility("default"))) void initPXIEx(int32_t number, int32_t zero,
                                                      int32_t* status) {
  char text[64];
  snprintf(text, sizeof text, "initialize %d %d %d", (int)number, (int)zero, (int)*status);
  record(text);
  *status = told("initialize");
}
#endif

#ifndef WITHOUT_open
__attribute__((visibility("default"))) void* nCORPXIINIT100_openPXISession(tFixedStatus* status) {
  record("open");
  report("open", status);
  return &session;
}
#endif

#ifndef WITHOUT_close
__attribute__((visibility("default"))) void nCORPXIINIT100_closePXISession(void* handle) {
  record(handle == &session ? "close" : "close another");
}
#endif

#ifndef WITHOUT_mode
__attribute__((visibility("default"))) void nCORPXIINIT100_getChassisTriggerManagerMode(
    void* handle, const char* vendor, const char* model, const char* manager, uint32_t* mode,
    tFixedStatus* status) {
  char text[256];
  snprintf(text, sizeof text, "mode %s|%s|%s", vendor, model, manager);
  record(handle == &session ? text : "mode of another");
  *mode = (uint32_t)told("mode");
  report("modeStatus", status);
}
#endif
