#pragma once

#include <string>

namespace tavrolin::device {

// What came with the program, found from where the program that asks lies: beside it in the tree
// that it was built in, or in the installed one, which may have been moved. Empty when it isn't
// there. Threads: any.

/// The program of the content extension, which alone is linked to what draws.
std::string contentExtensionProgram();
/// The folder of the library's resources.
std::string libraryResources();
/// The folder of the sample app's pictures.
std::string sampleAppPictures();

}  // namespace tavrolin::device
