#pragma once

#include "store/ManagedObjectModel.h"

#include <QString>

#include <memory>
#include <optional>

namespace tavril {

class ErrorPresenter;
class ManagedObjectContext;
class PersistentStoreCoordinator;
class PrivateFiles;
class UndoManager;
struct Desktop;

/// What the program does when it is asked to quit.
enum class TerminateReply { TerminateNow, TerminateCancel };

/// The application's object store, which is required. It is reached through the application delegate, and
/// Tavril itself keeps nothing in it. Each piece is made when it is first asked for; until then nothing is
/// read from or written to the disk. A piece that could not be made is tried again at the next request.
/// Pointers returned belong to the controller.
class StoreController {
 public:
  static constexpr const char16_t *bundleIdentifier = u"org.tavril.Tavril";
  // Kept: C36.
  static constexpr const char16_t *storeFileName = u"OSXCoreDataObjC.storedata";
  static constexpr const char16_t *errorDomain = u"YOUR_ERROR_DOMAIN";
  static constexpr int errorCode = 9999;

  struct Places {
    QString applicationSupport;  ///< the folder of all applications' data
    QString model;

    static Places standard();
  };

  StoreController(PrivateFiles &files, const Desktop &desktop, ErrorPresenter &errors,
                  Places places = Places::standard());
  ~StoreController();
  StoreController(const StoreController &) = delete;
  StoreController &operator=(const StoreController &) = delete;

  QString applicationDocumentsDirectory() const;
  /// Nothing when the model is missing or damaged.
  const ManagedObjectModel *managedObjectModel();
  /// Makes the data folder too. Nothing when it fails, which the user has then been told.
  PersistentStoreCoordinator *persistentStoreCoordinator();
  /// Nothing when there is no coordinator.
  ManagedObjectContext *managedObjectContext();

  /// Commits pending edits and saves what has changed; errors are shown to the user.
  void saveAction();
  /// Nothing when there is no context.
  UndoManager *windowWillReturnUndoManager();
  /// Saves before the end. Where that fails the user is asked.
  TerminateReply applicationShouldTerminate();

 private:
  bool loadModel(Error &error);
  std::optional<Error> openStore();
  void logUnableToCommit(const char16_t *method, const char16_t *purpose);

  PrivateFiles &files_;
  const Desktop &desktop_;
  ErrorPresenter &errors_;
  const Places places_;
  std::optional<ManagedObjectModel> model_;
  std::unique_ptr<PersistentStoreCoordinator> coordinator_;
  std::unique_ptr<ManagedObjectContext> context_;
};

}  // namespace tavril
