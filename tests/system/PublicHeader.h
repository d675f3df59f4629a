#pragma once

/* What both languages see of the public header; the results are the numbers of checks that failed. */
#ifdef __cplusplus
extern "C" {
#endif

int CheckInC(void);
int CheckInCpp(void);

#ifdef __cplusplus
}
#endif
