/* What a C99 caller does with the header alone. */
#include "varmex/varmex.h"

int useHeaderFromC(void);

static int hasVersion(varmex_Item* session, tStatusRecord* status) {
  const char* version = varmex_getStringAttribute(session, varmex_str_Version, status);
  return version != NULL && strcmp(version, "19.5.0") == 0;
}

int useHeaderFromC(void) {
  int faults = 0;
  tStatusRecord status = varmex_makeStatus();
  varmex_Item* session = varmex_openPXISession(0, &status);
  faults += !session;
  faults += !hasVersion(session, &status);
  faults += status.code != 0;
  faults += strcmp(varmex_statusText(&status), "{}") != 0;
  varmex_getU32Attribute(session, 99, &status);
  faults += status.code != varmex_errorAttributeNotApplicable;
  faults += strstr(varmex_statusText(&status), "varmex_errorAttributeNotApplicable") == NULL;
  varmex_releaseStatus(&status);
  faults += status.code != 0 || status.text != NULL || status.capacity != 0;
  varmex_close(session);
  return faults;
}
