// The media-server shim's record of the library's eventing notifications.
#include <mdb_platform.h>

#include "server/mdb_server_shim.h"

#include <gtest/gtest.h>

namespace {

TEST(ServerShim, CountsEveryNotificationAndKeepsTheFirst) {
    MdbShimResetNotifications();
    for (uint32_t i = 1; i <= MDB_SHIM_NOTIFY_KEPT + 5; ++i) EXPECT_EQ(QRV_DMS_NOTIFY_SUBSCRIPTION(i), 0);
    EXPECT_EQ(MdbShimNotifyCount(), MDB_SHIM_NOTIFY_KEPT + 5);
    for (uint32_t i : {0u, MDB_SHIM_NOTIFY_KEPT - 1}) EXPECT_EQ(MdbShimNotifyFlags(i), i + 1);
    EXPECT_EQ(MdbShimNotifyFlags(MDB_SHIM_NOTIFY_KEPT), 0u); // counted, not kept
    MdbShimResetNotifications();
    EXPECT_EQ(MdbShimNotifyCount(), 0u);
    EXPECT_EQ(MdbShimNotifyFlags(0), 0u);
}

} // namespace
