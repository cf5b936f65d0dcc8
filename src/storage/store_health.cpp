#include "storage/store_health.h"

#include <sqlite3.h>

#include <cerrno>
#include <utility>

namespace orvanta {

std::string_view nameOf(StoreTrouble trouble) {
  switch (trouble) {
    case StoreTrouble::ReadOnly:
      return "readonly";
    case StoreTrouble::Full:
      return "full";
    case StoreTrouble::Locked:
      return "locked";
    case StoreTrouble::Damaged:
      return "damaged";
    case StoreTrouble::Absent:
      return "absent";
  }
  return "";
}

std::string_view sentenceOf(StoreTrouble trouble) {
  switch (trouble) {
    case StoreTrouble::ReadOnly:
      return "Le fichier des données est en lecture seule : rien de nouveau n’est enregistré.";
    case StoreTrouble::Full:
      return "Le disque est plein : rien de nouveau n’est enregistré.";
    case StoreTrouble::Locked:
      return "Un autre programme retient le fichier des données : rien de nouveau n’est "
             "enregistré.";
    case StoreTrouble::Damaged:
      return "Le fichier des données est abîmé : rien de nouveau n’est enregistré.";
    case StoreTrouble::Absent:
      return "Le fichier des données ne peut pas être ouvert : rien de nouveau n’est enregistré.";
  }
  return "";
}

std::string_view shortNameOf(StoreTrouble trouble) {
  switch (trouble) {
    case StoreTrouble::ReadOnly:
      return "données en lecture seule";
    case StoreTrouble::Full:
      return "disque plein";
    case StoreTrouble::Locked:
      return "données retenues par un autre programme";
    case StoreTrouble::Damaged:
      return "données abîmées";
    case StoreTrouble::Absent:
      return "données inaccessibles";
  }
  return "";
}

std::optional<StoreTrouble> troubleOf(int code, int systemError) {
  switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return StoreTrouble::Locked;
    case SQLITE_FULL:
      return StoreTrouble::Full;
    case SQLITE_READONLY:
    case SQLITE_PERM:
      return StoreTrouble::ReadOnly;
    case SQLITE_CANTOPEN:
      return systemError == ENOSPC || systemError == EDQUOT ? StoreTrouble::Full
                                                            : StoreTrouble::Absent;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return StoreTrouble::Damaged;
    case SQLITE_IOERR:
      if (systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG) {
        return StoreTrouble::Full;
      }
      if (systemError == EROFS || systemError == EACCES || systemError == EPERM) {
        return StoreTrouble::ReadOnly;
      }
      // The index of the write-ahead log is made bigger when it is opened: there was no room.
      if (code == SQLITE_IOERR_SHMSIZE) return StoreTrouble::Full;
      return StoreTrouble::Absent;
    default:
      return {};
  }
}

bool StoreHealth::failed(StoreTrouble trouble) {
  const std::lock_guard lock(mutex_);
  lastFailure_ = clock_();
  // Damage stays, whatever else fails meanwhile, and another program's lock mends nothing.
  const bool known = condition_ && (condition_->trouble == trouble ||
                                    condition_->trouble == StoreTrouble::Damaged ||
                                    trouble == StoreTrouble::Locked);
  if (!known) {
    condition_ = Condition{trouble, lastFailure_};
    told_ = false;
  }
  return counts() && !std::exchange(told_, true);
}

bool StoreHealth::counts() const {
  constexpr double kUsualWait = 5.0;
  return condition_ && (condition_->trouble != StoreTrouble::Locked ||
                        lastFailure_ - condition_->since >= kUsualWait);
}

void StoreHealth::unlocked() {
  const std::lock_guard lock(mutex_);
  if (condition_ && condition_->trouble == StoreTrouble::Locked) condition_.reset();
}

void StoreHealth::wrote() {
  const std::lock_guard lock(mutex_);
  if (condition_ && condition_->trouble != StoreTrouble::Damaged) condition_.reset();
}

void StoreHealth::mended() {
  const std::lock_guard lock(mutex_);
  condition_.reset();
}

bool StoreHealth::suspected() const {
  const std::lock_guard lock(mutex_);
  return condition_.has_value();
}

std::optional<StoreHealth::Condition> StoreHealth::condition() const {
  const std::lock_guard lock(mutex_);
  return counts() ? condition_ : std::nullopt;
}

}  // namespace orvanta
