#include "store/StoreController.h"

#include "platform/Desktop.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/PrivateFiles.h"
#include "platform/StringTable.h"
#include "store/ErrorPresenter.h"
#include "store/ManagedObjectContext.h"
#include "store/PersistentStoreCoordinator.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QStringView>

#include <utility>

namespace tavril {

namespace {

Error initialisationError(const Error &underlying) {
  return {QString::fromUtf16(StoreController::errorDomain), StoreController::errorCode,
          QStringLiteral("Failed to initialize the application's saved data"),
          QStringLiteral("There was an error creating or loading the application's saved data."),
          std::make_shared<const Error>(underlying)};
}

}  // namespace

StoreController::Places StoreController::Places::standard() {
  return {QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation),
          QStringLiteral(":/model/Tavril.xml")};
}

StoreController::StoreController(PrivateFiles &files, const Desktop &desktop, ErrorPresenter &errors,
                                 Places places)
    : files_(files), desktop_(desktop), errors_(errors), places_(std::move(places)) {}

StoreController::~StoreController() = default;

QString StoreController::applicationDocumentsDirectory() const {
  return places_.applicationSupport + u'/' + QString::fromUtf16(bundleIdentifier);
}

bool StoreController::loadModel(Error &error) {
  if (!model_) model_ = ManagedObjectModel::load(places_.model, error);
  return model_.has_value();
}

const ManagedObjectModel *StoreController::managedObjectModel() {
  Error error;
  if (!loadModel(error)) {
    desktop_.log.warn(error.localizedDescription + u' ' + error.localizedFailureReason);
    return nullptr;
  }
  return &*model_;
}

std::optional<Error> StoreController::openStore() {
  Error modelError;
  if (!loadModel(modelError)) return modelError;

  const QString folder = applicationDocumentsDirectory();
  const QFileInfo existing(folder);
  if (existing.exists() && !existing.isDir()) {
    return Error{
        QString::fromUtf16(errorDomain),
        errorCode,
        QStringLiteral("Expected a folder to store application data, found a file (%1).").arg(folder),
        {},
        nullptr};
  }
  if (auto error = files_.makeFolder(folder)) return error;

  auto coordinator = std::make_unique<PersistentStoreCoordinator>(*model_, files_);
  if (auto error = coordinator->addXmlStore(folder + u'/' + QString::fromUtf16(storeFileName))) return error;
  coordinator_ = std::move(coordinator);
  return {};
}

PersistentStoreCoordinator *StoreController::persistentStoreCoordinator() {
  if (coordinator_) return coordinator_.get();
  if (const auto error = openStore()) errors_.present(initialisationError(*error));
  return coordinator_.get();
}

ManagedObjectContext *StoreController::managedObjectContext() {
  if (context_) return context_.get();
  if (auto *coordinator = persistentStoreCoordinator()) {
    context_ = std::make_unique<ManagedObjectContext>(*coordinator);
  }
  return context_.get();
}

void StoreController::saveAction() {
  ManagedObjectContext *context = managedObjectContext();
  // Without a context there is nothing to commit to, and nothing to save either.
  if (!context || !context->commitEditing()) logUnableToCommit(u"saveAction:", u"before saving");
  if (!context || !context->hasChanges()) return;
  if (const auto error = context->save()) errors_.present(*error);
}

UndoManager *StoreController::windowWillReturnUndoManager() {
  ManagedObjectContext *context = managedObjectContext();
  return context ? &context->undoManager() : nullptr;
}

TerminateReply StoreController::applicationShouldTerminate() {
  // Not asked for, so that quitting alone never makes a store.
  if (!context_) return TerminateReply::TerminateNow;
  if (!context_->commitEditing()) {
    logUnableToCommit(u"applicationShouldTerminate:", u"to terminate");
    return TerminateReply::TerminateCancel;
  }
  if (!context_->hasChanges()) return TerminateReply::TerminateNow;
  const auto error = context_->save();
  if (!error) return TerminateReply::TerminateNow;
  // A problem that was solved still leaves changes that are not saved: the user quits again when ready.
  if (errors_.present(*error)) return TerminateReply::TerminateCancel;

  const auto text = [&](QStringView key) { return desktop_.strings.text(key); };
  const int answer = desktop_.alert.run(
      {text(u"Could not save changes while quitting. Quit anyway?"),
       text(u"Quitting now will lose any changes you have made since the last successful save"),
       {text(u"Quit anyway"), text(u"Cancel")}});
  return answer == ModalAlert::firstButton ? TerminateReply::TerminateNow : TerminateReply::TerminateCancel;
}

void StoreController::logUnableToCommit(const char16_t *method, const char16_t *purpose) {
  // Kept: C37.
  desktop_.log.warn(QStringLiteral("AppDelegate:%1 unable to commit editing %2")
                        .arg(QString::fromUtf16(method), QString::fromUtf16(purpose)));
}

}  // namespace tavril
