#pragma once

namespace tavrolin {

/// Makes the layouts and the components known by their names, to `foundation::ClassRegistry` of
/// views, where the controller, the slots and the interface files find them. May be called again.
/// A host that has registered a class of its own under one of the names before keeps it. Threads:
/// any.
void registerViewClasses();

}  // namespace tavrolin
