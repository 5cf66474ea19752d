// The media-server shim: its notification record and its file server ports.
#include <mdb_platform.h>

#include "server/mdb_server_shim.h"

#include <gtest/gtest.h>

namespace {

TEST(ServerShim, RecordsNotificationsInOrderUntilReset) {
    MdbShimResetNotifications();
    EXPECT_EQ(MdbShimNotifyCount(), 0u);
    EXPECT_EQ(QRV_DMS_NOTIFY_SUBSCRIPTION(11), 0);
    EXPECT_EQ(QRV_DMS_NOTIFY_SUBSCRIPTION(0x1010C), 0);
    EXPECT_EQ(MdbShimNotifyCount(), 2u);
    EXPECT_EQ(MdbShimNotifyFlags(0), 11u);
    EXPECT_EQ(MdbShimNotifyFlags(1), 0x1010Cu);
    EXPECT_EQ(MdbShimNotifyFlags(2), 0u);
    MdbShimResetNotifications();
    EXPECT_EQ(MdbShimNotifyCount(), 0u);
    EXPECT_EQ(MdbShimNotifyFlags(0), 0u);
}

TEST(ServerShim, CountsBeyondTheKeptCalls) {
    MdbShimResetNotifications();
    for (uint32_t i = 0; i < MDB_SHIM_NOTIFY_KEPT + 5; ++i) {
        QRV_DMS_NOTIFY_SUBSCRIPTION(i + 1);
    }
    EXPECT_EQ(MdbShimNotifyCount(), MDB_SHIM_NOTIFY_KEPT + 5);
    EXPECT_EQ(MdbShimNotifyFlags(MDB_SHIM_NOTIFY_KEPT - 1), MDB_SHIM_NOTIFY_KEPT);
    EXPECT_EQ(MdbShimNotifyFlags(MDB_SHIM_NOTIFY_KEPT), 0u);
    MdbShimResetNotifications();
}

TEST(ServerShim, FileServerPortsDefaultAndCanBeSet) {
    EXPECT_EQ(UpnpGetFileServerPort(), 9000);
    EXPECT_EQ(UpnpGetFileServerPort6(), 9000);
    MdbShimSetFileServerPorts(8200, 8201);
    EXPECT_EQ(UpnpGetFileServerPort(), 8200);
    EXPECT_EQ(UpnpGetFileServerPort6(), 8201);
    MdbShimSetFileServerPorts(9000, 9000);
}

} // namespace
