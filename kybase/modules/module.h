// KyModule: the base class of loadable modules and, through its statics, the loader.
// A module is a shared library "name.so" with a descriptor "name.kmd" beside it in a
// directory of the context's module path; the library exports the C function
// KyInitModule(void* userArg), which returns a new object of a KyModule subclass.
//
// The loader starts at the first Load by name or ReScan: it reads KY_TRACEMODULES once
// and scans the module path. Find, IsLoaded and GetDescriptors never start it. Loading
// a descriptor loads the modules it requires first.
//
// Ownership: the loader owns its descriptors and their documents; the context's
// destruction releases them and closes their libraries. A module belongs to the
// client. Deleting the module that a descriptor made takes that descriptor out of the
// loader (its library stays open until shut-down, since the module's own code may
// still be running); copies of a module own nothing.
//
// Failure: GetError() holds the last status; messages and traces are lines on standard
// error. Threads: none; the loader's state is process-wide and unguarded.
#ifndef KYBASE_MODULES_MODULE_H
#define KYBASE_MODULES_MODULE_H

#include "kybase/core/export.h"

class KyModule;
class KyPathName;
class KyXmlDocument;

/// What is known of a module before (and after) its library is loaded.
class KY_EXPORT KyModuleDescriptor {
 public:
  /// A descriptor of nothing; the loader makes the real ones.
  KyModuleDescriptor() = default;
  /// Member-wise.
  KyModuleDescriptor(const KyModuleDescriptor&) = default;
  /// Member-wise.
  KyModuleDescriptor& operator=(const KyModuleDescriptor&) = default;

  /// The module's name; null for a module made from an empty name.
  virtual const char* getName() const = 0;
  /// The version in hundredths: 621 is 6.21.
  virtual int getVersion() const = 0;
  /// The path of the module's library.
  virtual const KyPathName& getLibraryPath() const = 0;
  /// The descriptor document; null when none was read.
  virtual KyXmlDocument* getDocument() const = 0;
  /// The module the library made; null until it is loaded.
  virtual KyModule* getModule() const = 0;

 protected:
  /// Only the loader deletes descriptors.
  virtual ~KyModuleDescriptor() = default;
};

/// A loadable module and, through its statics, the loader; see the family page.
class KY_EXPORT KyModule {
 public:
  /// The loader's status, as GetError() gives it.
  enum Error {
    kNoError = 0,               ///< the last load succeeded
    kModuleNotFound = 1,        ///< the library could not be loaded, or loading is off
    kEntryPointNotFound = 2,    ///< the library has no KyInitModule
    kDependencyNotResolved = 3  ///< a required module could not be loaded
  };

  /// The greatest descriptor version the loader accepts, in hundredths.
  static constexpr int kLibraryVersion = 621;

  /// A module that no descriptor made yet.
  KyModule() = default;
  /// A copy that owns nothing.
  KyModule(const KyModule&) = default;
  /// Member-wise.
  KyModule& operator=(const KyModule&) = default;
  /// Takes the descriptor that made this module out of the loader.
  virtual ~KyModule();

  /// The descriptor that made this module, or null.
  KyModuleDescriptor* getDescriptor() const { return descriptor; }

  /// "dir/foo.so", "foo.so" and "foo" all name the module foo. A known descriptor is
  /// loaded; otherwise the module path is searched for "foo", then "foo.so". Null when
  /// nothing loads; a name no file answers to leaves the status alone.
  static KyModule* Load(const char* name, void* userArg);
  /// The module of `descriptor`, loaded first if need be (the modules it requires before
  /// it); null on failure, with the status set.
  static KyModule* Load(KyModuleDescriptor* descriptor, void* userArg);
  /// Starts the loader if need be and scans the module path for descriptors not yet
  /// known; the first directory that has a name wins.
  static void ReScan();
  /// The known descriptor of `name`, or null; does not start the loader.
  static KyModuleDescriptor* Find(const char* name);
  /// The module of `name` if it is loaded, or null; does not start the loader.
  static KyModule* IsLoaded(const char* name);
  /// The chain, newest first, in a released block of KyPointerPool: valid until the
  /// pool's next taker, so copy it before calling anything else.
  static KyModuleDescriptor** GetDescriptors(unsigned long& count);
  /// The status of the last load.
  static Error GetError();
  /// Sets the status.
  static void SetError(Error error);

 private:
  friend class _KyModuleDescriptor;
  friend struct KyModuleLoader;
  KyModuleDescriptor* descriptor = nullptr;
};

#endif  // KYBASE_MODULES_MODULE_H
