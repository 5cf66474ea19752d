// A faster clock for mdbd's upload tests, preloaded with LD_PRELOAD: the uptime that sysinfo
// reports runs MDB_CLOCK_FACTOR times (10 by default) as fast from its first call on, so that the
// 35-second upload time-out passes in a few seconds. Nothing else is changed.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <sys/sysinfo.h>

int sysinfo(struct sysinfo *info) {
    static int (*real)(struct sysinfo *);
    static long start;
    if (real == NULL) {
        real = (int (*)(struct sysinfo *))dlsym(RTLD_NEXT, "sysinfo");
    }
    const int rc = real(info);
    if (rc == 0) {
        const char *factor = getenv("MDB_CLOCK_FACTOR");
        if (start == 0) {
            start = info->uptime;
        }
        info->uptime = start + (info->uptime - start) * (factor != NULL ? atol(factor) : 10);
    }
    return rc;
}
