#include "tavrolin/foundation/error.h"

namespace tavrolin::foundation {

std::string Error::description() const {
    std::string text = "Error Domain=" + domain + " Code=" + std::to_string(code);
    if (!localizedDescription.empty()) text += " \"" + localizedDescription + "\"";
    if (!localizedFailureReason.empty()) text += " (" + localizedFailureReason + ")";
    return text;
}

}  // namespace tavrolin::foundation
