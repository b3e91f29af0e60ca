// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "desktop_keyring.h"

#include <qt6keychain/keychain.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <string_view>

namespace tarnwick::app {

namespace {

// Stands in people's keyrings; do not change.
constexpr const char* kService = "tarnwick";

// Of an entry that nobody ever makes.
constexpr const char* kProbe = "probe";

// Nothing else of the program runs meanwhile but painting.
void Run(QKeychain::Job& job, const QString& name) {
  job.setAutoDelete(false);
  job.setKey(name);
  QEventLoop loop;
  QObject::connect(&job, &QKeychain::Job::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
  job.start();
  loop.exec(QEventLoop::ExcludeUserInputEvents);
}

std::string Reason(const QKeychain::Job& job) {
  switch (job.error()) {
    case QKeychain::NoError:
      return {};
    case QKeychain::NoBackendAvailable:
      return QCoreApplication::translate("DesktopKeyring", "No keyring is running on this desktop.")
          .toStdString();
    default:
      return QCoreApplication::translate("DesktopKeyring",
                                         "The desktop's keyring can't be reached (%1).")
          .arg(job.errorString())
          .toStdString();
  }
}

}  // namespace

std::string DesktopKeyring::WhyNot() {
  QKeychain::ReadPasswordJob job(kService);
  Run(job, kProbe);
  return job.error() == QKeychain::EntryNotFound ? std::string() : Reason(job);
}

std::optional<platform::Secret> DesktopKeyring::Find(const std::string& name) {
  QKeychain::ReadPasswordJob job(kService);
  Run(job, QString::fromStdString(name));
  if (job.error() != QKeychain::NoError) return std::nullopt;
  QByteArray bytes = job.binaryData();
  platform::Secret password(std::string_view(bytes.constData(), static_cast<size_t>(bytes.size())));
  bytes.fill('\0');
  return password;
}

std::string DesktopKeyring::Keep(const std::string& name, const platform::Secret& password) {
  QKeychain::WritePasswordJob job(kService);
  std::string_view bytes = password.Bytes();
  job.setBinaryData(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
  Run(job, QString::fromStdString(name));
  return Reason(job);
}

void DesktopKeyring::Remove(const std::string& name) {
  QKeychain::DeletePasswordJob job(kService);
  Run(job, QString::fromStdString(name));
}

}  // namespace tarnwick::app
