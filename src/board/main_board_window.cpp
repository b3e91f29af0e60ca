// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/main_board_window.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>

#include "board/help_topics.h"
#include "board/layout_store.h"
#include "board/list_query.h"
#include "board/profile_summary.h"
#include "board/sources.h"
#include "board/window_place.h"
#include "contacts/contacts_window.h"
#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "maintenance/protect.h"
#include "maintenance/unfinished_restore.h"
#include "options/about_dialog.h"
#include "options/options_window.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"
#include "search/mail_map.h"

namespace tarnwick::board {

namespace {

using core::State;

constexpr const char* kCheckLink = "check";

}  // namespace

MainBoard::MainBoard(QWidget* parent)
    : QMainWindow(parent),
      parts_(BuildBoard(this)),
      work_(new BoardWork(parts_, this)),
      list_(new ListActions(parts_, *work_, this)),
      search_(new SearchActions(parts_, *work_, *list_, this)),
      conversations_(new ConversationActions(parts_, *work_, *list_, this)),
      load_(new LoadActions(parts_, *work_, *list_, this)),
      find_(new FindActions(parts_, *work_, *load_, this)),
      reading_(new ReadingActions(parts_, *work_, *list_, this)),
      messages_(new MessageActions(parts_, *work_, *list_, *reading_, this)) {
  setObjectName("MainBoard");
  setWindowTitle(tr("Email List"));
  auto stoppable = [this](const std::function<void()>& command) { work_->RunStoppable(command); };
  takeout_ = new TakeoutActions(*parts_.actions, *parts_.grid, stoppable, this);
  auto withListClosed = [this](const std::function<void()>& command) {
    work_->RunStoppable([&] {
      // Events run while the engine works, and nothing may read from it then.
      messages_->StopFollowing();
      parts_.grid->Freeze();
      command();
      list_->ListRepository();
      list_->UpdateHint();
    });
  };
  auto listRestored = [this] {
    messages_->ForgetDeleted();
    list_->ListRepository();
  };
  maintenance_ = new MaintenanceActions(*parts_.actions, withListClosed, listRestored, this);
  Connect();
}

// The commands of the window itself; every other one is connected by its *_actions.
void MainBoard::Connect() {
  const BoardActions& actions = *parts_.actions;
  auto on = [this](QAction* action, auto command) {
    connect(action, &QAction::triggered, this, command);
  };
  on(actions.openRepository, [this] { ChooseRepository(false); });
  on(actions.createRepository, [this] { ChooseRepository(true); });
  auto* recent = new QMenu(this);
  actions.recentRepositories->setMenu(recent);
  connect(recent, &QMenu::aboutToShow, this, &MainBoard::FillRecent);
  on(actions.lock, [this] { AskForLock(); });
  on(actions.contacts, [this] { OpenContacts(); });
  on(actions.options, [this] { options::frmOptions(ReadProfile, Mailers(), this).exec(); });
  on(actions.helpTopics,
     [this] { work_->Run([] { ShowHelp(platform::FolderOf(platform::ProgramPath())); }); });
  on(actions.about, [this] { options::AboutDialog(this).exec(); });
  on(actions.exit, [this] { close(); });
  on(actions.quit, [this] { close(); });
  connect(actions.timeline, &QAction::toggled, this, &MainBoard::SetTimelineShown);
  connect(parts_.notice, &QLabel::linkActivated, this, &MainBoard::FollowNotice);
}

bool MainBoard::Load() {
  bool sameWidth = RestorePlace(*this);
  parts_.grid->ApplyWidths(repository::ReadNamedLayout(kGridGroup, kGridNames), sameWidth);
  reading_->RestorePane();
  AddRecentRepository(repository::Repository().RepositoryFolder);
  ShowRepositoryFolder();
  parts_.actions->timeline->setChecked(ReadTimelineShown());
  parts_.timeline->setVisible(parts_.actions->timeline->isChecked());
  parts_.timeline->Forget();
  parts_.strip->ForgetChoices();
  search_->Load();
  conversations_->Load();
  parts_.showEmailText->setChecked(State().ShowEmailText);
  bool listed = RestoreFilterAndLoad(*list_);
  parts_.grid->setFocus();
  if (repository::Repository().WasNotClosed) OfferCheck();
  return listed;
}

void MainBoard::OfferCheck() {
  parts_.notice->setText(
      tr("The program did not come to its end the last time. <a href=\"%1\">Check "
         "whether every message is whole</a>")
          .arg(kCheckLink));
  parts_.notice->show();
}

void MainBoard::AskForLock() {
  if (maintenance::IsProtected()) {
    emit LockAskedFor();
  } else {
    core::ShowMessage("The repository has no password of its own. File, Protect gives it one.");
  }
}

void MainBoard::FollowNotice(const QString& link) {
  if (link != kCheckLink) return;
  parts_.notice->hide();
  parts_.actions->check->trigger();
}

void MainBoard::SetTimelineShown(bool on) {
  parts_.timeline->setVisible(on);
  SaveTimelineShown(on);
}

void MainBoard::FillRecent() {
  QMenu* recent = parts_.actions->recentRepositories->menu();
  recent->clear();
  for (const std::string& folder : ReadRecentRepositories()) {
    if (folder == repository::Repository().RepositoryFolder) continue;
    QAction* entry = recent->addAction(QString::fromStdString(folder).replace('&', "&&"));
    connect(entry, &QAction::triggered, this, [this, folder] { SwitchRepository(folder, false); });
  }
  if (recent->isEmpty()) recent->addAction(tr("None yet"))->setEnabled(false);
}

void MainBoard::ChooseRepository(bool create) {
  auto folder = State().Ui->ChooseFolder("Select repository folder");
  if (folder && !folder->empty()) SwitchRepository(*folder, create);
}

void MainBoard::SwitchRepository(const std::string& folder, bool create) {
  SaveLayout();
  bool switched =
      create ? repository::CreateRepositoryIn(folder) : repository::OpenRepositoryIn(folder);
  if (switched) {
    parts_.notice->hide();
    messages_->HideText();
    messages_->ForgetDeleted();
    parts_.status->SetPanel(core::StatusPanel::kProgress, {});
    maintenance::AskAboutUnfinishedRestore();
    Load();
  } else if (!Board().ListRecordset.IsOpen()) {
    // The attempt closed the former repository for a while, and its list with it.
    ShowRefresh(*list_);
  }
}

void MainBoard::OpenContacts() {
  contacts::frmContacts window(this);
  connect(&window, &contacts::frmContacts::Changed, this, [this] {
    if (repository::HasNoEmail()) State().RepositoryIsEmpty = true;
    parts_.strip->ForgetChoices();
    list_->ListAnew(true);
  });
  window.exec();
  search::Map().ForgetContacts();
}

void MainBoard::SaveLayout() {
  core::GuardedRun("Form_Unload", [this] {
    jet::CommitGroup group(repository::ParameterDb());
    repository::SaveNamedLayout(kGridGroup, kGridNames, parts_.grid->Widths());
    ListFilter filter = Board().Filter;
    parts_.strip->ReadFilter(filter);
    SaveFilter(filter, CountListed());
    StorePlace(*this);
    reading_->SavePane();
    repository::ParameterDb().EndUnit();
    group.End();
  });
}

void MainBoard::closeEvent(QCloseEvent* event) {
  if (work_->IsRunning()) {
    // What runs is asked to stop; the window closes once it has.
    work_->StopAndClose();
    event->ignore();
    return;
  }
  SaveLayout();
  messages_->HideText();
  event->accept();
}

}  // namespace tarnwick::board
