// What the system starts. Everything else is Objective-C and C++: the entry alone has to be Swift.
import ExtensionFoundation
import FSKit

@main
struct TarnelFSExtension: UnaryFileSystemExtension {
  // A new one each time it is asked for; the system keeps it.
  var fileSystem: TarnelFileSystem { TarnelFileSystem() }
}
