#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace tavrolin::tests {

inline foundation::Ref<CVNNotificationPayloadModel> payloadWithTrid(foundation::Value trid) {
    auto model = std::make_shared<CVNNotificationPayloadModel>();
    model->source = "Corvalen";
    model->cvnPayload = std::make_shared<CVNPayload>();
    model->cvnPayload->trid = std::move(trid);
    return model;
}

/// The whole platform in memory, installed.
class StoreFixture : public testing::Test {
protected:
    StoreFixture() { platform::install(memory_.platform()); }

    adapters::memory::MemoryPlatform& memory_ = *new adapters::memory::MemoryPlatform;
};

}  // namespace tavrolin::tests
