#include "tavrolin/core/app_services.h"

namespace tavrolin {

AppServices& appServices() {
    static AppServices services;
    return services;
}

}  // namespace tavrolin
