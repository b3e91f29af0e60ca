// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/main_board_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>

#include "board/help_topics.h"
#include "board/layout_store.h"
#include "board/load_log.h"
#include "board/message_commands.h"
#include "board/message_viewer.h"
#include "board/profile_summary.h"
#include "board/search_watch.h"
#include "board/sources.h"
#include "board/window_place.h"
#include "contacts/contacts_window.h"
#include "core/guard.h"
#include "core/run_state.h"
#include "maintenance/unfinished_restore.h"
#include "options/about_dialog.h"
#include "options/options_window.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

using core::State;

constexpr const char* kShowEmailText = "ShowEmailText";
// A little now and then: nobody notices, and a million messages are searchable in minutes.
constexpr int kPrepareEveryMilliseconds = 50;
constexpr int64_t kPrepareMilliseconds = 20;

constexpr const char* kCheckLink = "check";

}  // namespace

MainBoard::MainBoard(QWidget* parent) : QMainWindow(parent), actions_(new BoardActions(this)) {
  setObjectName("MainBoard");
  setWindowTitle(tr("Email List"));
  BuildBody();
  BuildMenus();
  Connect();
}

void MainBoard::BuildMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  file->setObjectName("mnuFile");
  file->addAction(actions_->openRepository);
  file->addAction(actions_->createRepository);
  file->addSeparator();
  file->addActions({actions_->backup, actions_->restore, actions_->exportListed, actions_->merge,
                    actions_->check});
  file->addSeparator();
  file->addActions({actions_->loadTextFile, actions_->saveMessages});
  file->addSeparator();
  file->addAction(actions_->exit);
  QMenu* view = menuBar()->addMenu(tr("&View"));
  view->setObjectName("mnuView");
  view->addAction(actions_->timeline);
  QMenu* tools = menuBar()->addMenu(tr("&Tools"));
  tools->setObjectName("mnuTools");
  tools->addActions({actions_->contacts, actions_->options});
  tools->addAction(actions_->lastLoad);
  tools->addSeparator();
  tools->addActions({actions_->markAllNotHot, actions_->moveHtml});
  QMenu* help = menuBar()->addMenu(tr("&Help"));
  help->setObjectName("mnuHelp");
  help->addActions({actions_->helpTopics, actions_->about});
}

void MainBoard::BuildBody() {
  auto* body = new QWidget(this);
  auto* column = new QVBoxLayout(body);
  column->setContentsMargins(8, 6, 8, 6);
  strip_ = new FilterStripView(body);
  timeline_ = new TimelineView(body);
  grid_ = new EmailGridView(body);
  status_ = new StatusPanelsView(this);
  notice_ = new QLabel(body);
  notice_->setObjectName("Notice");
  notice_->setTextFormat(Qt::RichText);
  notice_->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  notice_->hide();
  column->addWidget(strip_);
  column->addWidget(timeline_);
  column->addWidget(notice_);
  column->addWidget(grid_, 1);

  auto* buttons = new QHBoxLayout;
  const struct {
    QAction* action;
    const char* name;
  } left[] = {{actions_->showAll, "ShowAll"},
              {actions_->showEmail, "ShowEmail"},
              {actions_->showRelated, "cmRelated"},
              {actions_->toggleHot, "MarkActive"},
              {actions_->deleteSelected, "DeleteCurent"}},
    right[] = {{actions_->loadFromMailer, "LoadMailler"}, {actions_->quit, "Quite"}};
  for (const auto& entry : left) {
    buttons->addWidget(BoardActions::MakeButton(entry.action, entry.name, body));
  }
  cbShowEmailText_ = new QCheckBox(tr("Show email text"), body);
  cbShowEmailText_->setObjectName("cbShowEmailText");
  // Every letter of the caption is another control's. A shortcut of the box itself would take the
  // focus from the list, whose selection the text follows.
  auto* showText = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_T), this);
  connect(showText, &QShortcut::activated, cbShowEmailText_, &QCheckBox::toggle);
  cbShowEmailText_->setToolTip(tr("A window with the text of the selected message (Ctrl+T)"));
  buttons->addSpacing(8);
  buttons->addWidget(cbShowEmailText_);
  buttons->addStretch(1);
  for (const auto& entry : right) {
    buttons->addWidget(BoardActions::MakeButton(entry.action, entry.name, body));
  }
  column->addLayout(buttons);
  setCentralWidget(body);
  setStatusBar(status_);

  auto* separator = new QAction(this);
  separator->setSeparator(true);
  grid_->addActions({actions_->showEmail, actions_->attachments, actions_->showRelated,
                     actions_->toggleHot, actions_->markAllNotHot, separator, actions_->copy,
                     actions_->saveMessages, actions_->deleteSelected});
  // Shortcuts of what is in no menu.
  addActions({actions_->showAll, actions_->loadFromMailer, actions_->stop});
}

void MainBoard::Connect() {
  auto on = [this](QAction* action, void (MainBoard::*command)()) {
    connect(action, &QAction::triggered, this, command);
  };
  on(actions_->showAll, &MainBoard::ShowEverything);
  on(actions_->showRelated, &MainBoard::ShowRelated);
  on(actions_->deleteSelected, &MainBoard::DeleteSelected);
  on(actions_->toggleHot, &MainBoard::ToggleHot);
  on(actions_->markAllNotHot, &MainBoard::MarkAllHotOff);
  on(actions_->loadFromMailer, &MainBoard::LoadFromMailer);
  on(actions_->loadTextFile, &MainBoard::ChooseTextFile);
  on(actions_->showEmail, &MainBoard::ShowEmail);
  on(actions_->moveHtml, &MainBoard::MoveHtml);
  on(actions_->contacts, &MainBoard::OpenContacts);
  on(actions_->options, &MainBoard::OpenOptions);
  on(actions_->lastLoad, &MainBoard::ShowLastLoad);
  on(actions_->helpTopics, &MainBoard::OpenHelp);
  on(actions_->about, &MainBoard::ShowAbout);
  on(actions_->stop, &MainBoard::Stop);
  connect(actions_->openRepository, &QAction::triggered, this, [this] { SwitchRepository(false); });
  connect(actions_->createRepository, &QAction::triggered, this,
          [this] { SwitchRepository(true); });
  auto whileStoppable = [this](const std::function<void()>& command) {
    Run([&] {
      status_->SetPanel(core::StatusPanel::kProgress, {});
      status_->SetBusy(true);
      command();
    });
  };
  takeout_ = new TakeoutActions(*actions_, *grid_, whileStoppable, this);
  auto listAnew = [this] {
    repository::NoteWhetherEmpty();
    FillChoices();
    ShowRefresh(*this);
  };
  auto withListClosed = [=, this](const std::function<void()>& command) {
    whileStoppable([&] {
      // Events run while the engine works, and nothing may read from it then.
      follow_.stop();
      grid_->Unbind();
      command();
      listAnew();
      UpdateHint();
    });
  };
  maintenance_ = new MaintenanceActions(*actions_, withListClosed, listAnew, this);
  connect(actions_->exit, &QAction::triggered, this, &QWidget::close);
  connect(actions_->quit, &QAction::triggered, this, &QWidget::close);
  connect(actions_->copy, &QAction::triggered, grid_, &EmailGridView::CopySelected);
  connect(status_, &StatusPanelsView::StopAskedFor, this, &MainBoard::Stop);
  connect(notice_, &QLabel::linkActivated, this, [this](const QString& link) {
    notice_->hide();
    (link == kCheckLink ? actions_->check : actions_->showAll)->trigger();
  });
  connect(strip_, &FilterStripView::FilterChanged, this, &MainBoard::Refresh);
  connect(timeline_, &TimelineView::DatesAskedFor, this, [this](DateTime from, DateTime to) {
    RefreshWith([&](ListFilter& filter) {
      DateRange whole = WholeDateRange();
      filter.DateFrom = from, filter.DateTo = to;
      filter.DateFromGrows = from == whole.from, filter.DateToGrows = to == whole.to;
    });
  });
  connect(timeline_, &TimelineView::NameAskedFor, this, [this](const QString& text) {
    RefreshWith([&](ListFilter& filter) { filter.FromTo = text.toStdString(); });
  });
  connect(actions_->timeline, &QAction::toggled, this, &MainBoard::SetTimelineShown);
  connect(strip_, &FilterStripView::LastBoxLeft, grid_, qOverload<>(&QWidget::setFocus));
  connect(grid_, &QTableView::doubleClicked, this, [this] {
    if (grid_->Current().id != 0) actions_->showEmail->trigger();
  });
  follow_.setSingleShot(true);
  connect(&follow_, &QTimer::timeout, this, &MainBoard::FollowSelection);
  connect(grid_, &EmailGridView::CurrentChanged, &follow_, qOverload<>(&QTimer::start));
  prepare_.setInterval(kPrepareEveryMilliseconds);
  connect(&prepare_, &QTimer::timeout, this, &MainBoard::PrepareSearch);
  connect(cbShowEmailText_, &QCheckBox::toggled, this, &MainBoard::SetShowEmailText);
  connect(grid_, &EmailGridView::SortAskedFor, strip_, &FilterStripView::SortBy);
}

bool MainBoard::Load() {
  bool sameWidth = RestorePlace(*this);
  grid_->ApplyWidths(repository::ReadNamedLayout(kGridGroup, kGridNames), sameWidth);
  ShowRepositoryFolder();
  actions_->timeline->setChecked(ReadTimelineShown());
  timeline_->setVisible(actions_->timeline->isChecked());
  timeline_->Forget();
  FillChoices();
  cbShowEmailText_->setChecked(State().ShowEmailText);
  bool listed = RestoreFilterAndLoad(*this);
  grid_->setFocus();
  prepare_.start();
  if (repository::Repository().WasNotClosed) OfferCheck();
  return listed;
}

void MainBoard::OfferCheck() {
  notice_->setText(tr("The program did not come to its end the last time. <a href=\"%1\">Check "
                      "whether every message is whole</a>")
                       .arg(kCheckLink));
  notice_->show();
}

void MainBoard::SetDataSource(jet::Recordset& list, bool placeholder) {
  grid_->Bind(list, placeholder, keepPlace_);
  keepPlace_ = false;
  grid_->ShowSort(Board().Filter.SortBy, Board().Filter.SortOrder);
  timeline_->Follow(Board().Filter);
  UpdateHint();
  // The rows are there; the counts that come next may take a look at every message.
  if (grid_->isVisible()) grid_->viewport()->repaint();
}

void MainBoard::ShowFilter(const ListFilter& filter) {
  strip_->ShowFilter(filter);
}

void MainBoard::DescribeCounts(int64_t received, int64_t sent) {
  int64_t total = received + sent;
  QString messages = total == 1 ? tr("1 message") : tr("%L1 messages").arg(qlonglong{total});
  status_->ExplainPanel(
      core::StatusPanel::kCounts,
      tr("%1: %L2 received, %L3 sent").arg(messages).arg(qlonglong{received}).arg(qlonglong{sent}));
}

void MainBoard::UpdateHint() {
  const ListFilter& filter = Board().Filter;
  auto hasMark = [](const std::string& text) {
    return text.find_first_of("'\"") != std::string::npos;
  };
  bool inSubject = hasMark(filter.Subject);
  if (repository::HasNoEmail()) {
    grid_->SetHint(tr("There is no mail in this repository yet."),
                   tr("Choose \"Load from Mailer\" to take it from an old Windows profile or a "
                      "folder with *.dbx or *.pst files."));
  } else if (inSubject || (hasMark(filter.FromTo) && !filter.FromToIsListed)) {
    grid_->SetHint(tr("No message matches the filter."),
                   tr("The box \"%1\" holds an apostrophe or quotation mark. Such a mark is looked "
                      "for as an underscore (_), so the message it was copied from is not found, "
                      "either. Shorten the text to a part without it.")
                       .arg(inSubject ? tr("Subject") : tr("From/To")));
  } else {
    grid_->SetHint(tr("No message matches the filter."),
                   tr("Change it above, or choose \"Show All\" to list every message."));
  }
}

// Runs a command during which everything else waits; what can be stopped tests the cancel flag.
void MainBoard::Run(const std::function<void()>& command) {
  if (busy_) return;
  BeginWork();
  command();
  EndWork();
}

void MainBoard::BeginWork() {
  busy_ = true;
  actions_->SetBusy(true);
  focusBefore_ = focusWidget();
  strip_->setEnabled(false);
  timeline_->setEnabled(false);
}

void MainBoard::EndWork() {
  status_->SetBusy(false);
  strip_->setEnabled(true);
  timeline_->setEnabled(true);
  actions_->SetBusy(false);
  busy_ = false;
  prepare_.start();
  if (focusBefore_ != nullptr && focusBefore_->isEnabled()) focusBefore_->setFocus();
  if (closeWhenDone_) QTimer::singleShot(0, this, &QWidget::close);
}

// Lists what the filter lets through. A query that takes long can be stopped; meanwhile the list
// stands still, for the engine is at work on it.
void MainBoard::List() {
  auto freeze = [this](bool on) {
    grid_->setUpdatesEnabled(!on);
    grid_->setEnabled(!on);
  };
  bool isListed = false;
  bool tookLong = false;
  {
    SearchWatch watch([&] {
      BeginWork();
      freeze(true);
      status_->SetPanel(core::StatusPanel::kProgress, tr("Searching..."));
      status_->SetBusy(true);
    });
    isListed = ShowRefresh(*this);
    tookLong = watch.HasBegun();
  }
  if (!tookLong) return;
  freeze(false);
  EndWork();
  follow_.start();
  status_->SetPanel(core::StatusPanel::kProgress,
                    isListed ? QString() : tr("The search was stopped; the list is as it was."));
}

void MainBoard::PrepareSearch() {
  if (busy_ || State().LoadIsRunning) return;
  if (repository::PrepareSearch(kPrepareMilliseconds)) prepare_.stop();
}

void MainBoard::Stop() {
  if (!busy_) return;
  StopLoad();
  status_->ShowStopping();
}

void MainBoard::Refresh() {
  if (busy_) return;
  notice_->hide();
  strip_->ReadFilter(Board().Filter);
  List();
}

// As if the person had changed the controls.
void MainBoard::RefreshWith(const std::function<void(ListFilter&)>& change) {
  if (busy_) return;
  ListFilter filter = Board().Filter;
  strip_->ReadFilter(filter);
  change(filter);
  ShowFilter(filter);
  Refresh();
}

void MainBoard::SetTimelineShown(bool on) {
  timeline_->setVisible(on);
  SaveTimelineShown(on);
}

// After rows were changed in the open list.
void MainBoard::ListAnew(bool changed) {
  if (!changed) return;
  keepPlace_ = true;
  timeline_->Forget();
  RequeryEmailList();
  BindEmailList(*this);
}

// Empties the filter but for the subject; the order stays.
void MainBoard::ListEvery(const std::string& subject) {
  ListFilter every = EveryMessage();
  const ListFilter& now = Board().Filter;
  every.SortBy = now.SortBy;
  every.SortOrder = now.SortOrder;
  every.Project = now.Project;
  every.Subject = subject;
  Board().Filter = every;
  notice_->hide();
  ShowFilter(every);
  List();
}

void MainBoard::ShowEverything() {
  ListEvery({});
}

void MainBoard::ShowRelated() {
  SelectedMessage message = grid_->Current();
  if (message.id == 0) {
    ShowNothingSelected();
  } else {
    ListEvery(RelatedSubject(message.subject));
  }
}

void MainBoard::DeleteSelected() {
  Run([this] { ListAnew(DeleteMessages(grid_->Selected())); });
}

void MainBoard::ToggleHot() {
  Run([this] { ListAnew(ToggleActive(grid_->Selected())); });
}

void MainBoard::MarkAllHotOff() {
  Run([this] { ListAnew(MarkAllNotHot()); });
}

void MainBoard::LoadFromMailer() {
  Run([this] {
    status_->SetPanel(core::StatusPanel::kProgress, {});
    status_->SetBusy(true);
    grid_->SetHint(tr("Loading..."), tr("The messages are listed when the load ends."));
    LoadResult result = board::LoadFromMailer({});
    UpdateHint();
    if (!result.ran) return;
    ListFilter& filter = Board().Filter;
    strip_->ReadFilter(filter);
    if (auto latest = State().LatestReceivedTime) {
      // So that the list shows what was loaded.
      filter.DateFrom = latest->DatePart();
      filter.DateFromGrows = false;
      filter.DateTo = std::max(filter.DateTo, filter.DateFrom);
    }
    ShowFilter(filter);
    FillChoices();
    ShowRefresh(*this);
    ShowLastLoaded();
    ShowNotice();
  });
}

// A load narrows the list to what it brought last; nobody should miss the rest.
void MainBoard::ShowNotice() {
  DateTime from = Board().Filter.DateFrom;
  if (from <= WholeDateRange().from) {
    notice_->hide();
    return;
  }
  QString day = QString::fromStdString(platform::FormatDate(from, "ddddd")).toHtmlEscaped();
  notice_->setText(tr("The list begins on %1, the day of the latest message loaded. "
                      "<a href=\"all\">Show all messages</a>")
                       .arg(day));
  notice_->show();
}

void MainBoard::ChooseTextFile() {
  QString path = QFileDialog::getOpenFileName(this, tr("Select email file"), {},
                                              "(*.txt);;" + tr("All files") + " (*)");
  if (!path.isEmpty()) LoadTextFile(path);
}

void MainBoard::LoadTextFile(const QString& path) {
  Run([&] {
    status_->SetPanel(core::StatusPanel::kProgress, {});
    if (TakeTextFiles({path.toStdString()}).stored == 0) return;
    ListFilter& filter = Board().Filter;
    strip_->ReadFilter(filter);
    if (auto latest = State().LatestReceivedTime) {
      filter.DateFrom = std::min(filter.DateFrom, latest->DatePart());
      filter.DateTo = std::max(filter.DateTo, latest->DatePart());
    }
    ShowFilter(filter);
    FillChoices();
    ShowRefresh(*this);
    status_->SetPanel(core::StatusPanel::kProgress, tr("The message is stored."));
  });
}

void MainBoard::SwitchRepository(bool create) {
  auto folder = State().Ui->ChooseFolder("Select repository folder");
  if (!folder || folder->empty()) return;
  SaveLayout();
  std::string former = repository::Repository().RepositoryFolder;
  bool switched =
      create ? repository::CreateRepositoryIn(*folder) : repository::OpenRepositoryIn(*folder);
  if (switched) {
    notice_->hide();
    if (text_ != nullptr) text_->hide();  // until a message of this repository is selected
    status_->SetPanel(core::StatusPanel::kProgress, {});
    maintenance::AskAboutUnfinishedRestore();
    Load();
  } else if (!Board().ListRecordset.IsOpen()) {
    // The attempt closed the former repository for a while, and its list with it.
    ShowRefresh(*this);
  }
}

void MainBoard::ShowEmail() {
  SelectedMessage message = grid_->Current();
  if (message.id == 0) {
    ShowNothingSelected();
    return;
  }
  // The desktop may take a few seconds to refuse, and events run meanwhile.
  Run([&] { ShowStoredMessage(message.id, message.application); });
}

void MainBoard::SetShowEmailText(bool on) {
  if (State().ShowEmailText != on) {
    repository::SetOption(kShowEmailText, on);
  }
  if (on) {
    FollowSelection();
  } else if (text_ != nullptr) {
    text_->hide();
  }
}

void MainBoard::FollowSelection() {
  if (!cbShowEmailText_->isChecked() || !isVisible() || !grid_->isEnabled()) return;
  int64_t id = grid_->Current().id;
  if (id == 0) return;
  auto shown = ReadEmailText(id);
  if (!shown) return;
  if (text_ == nullptr) {
    text_ = new frmEmailText(this);
    // Closed by the person, it stays away until the box is checked again.
    connect(text_, &QDialog::rejected, cbShowEmailText_,
            [this] { cbShowEmailText_->setChecked(false); });
  }
  text_->ShowText(*shown);
}

void MainBoard::MoveHtml() {
  Run([this] {
    status_->SetBusy(true);
    ListAnew(MoveHtmlToBody());
  });
}

void MainBoard::OpenContacts() {
  contacts::frmContacts window(this);
  connect(&window, &contacts::frmContacts::Changed, this, [this] {
    if (repository::HasNoEmail()) State().RepositoryIsEmpty = true;
    FillChoices();
    ListAnew(true);
  });
  window.exec();
}

void MainBoard::OpenOptions() {
  options::frmOptions(ReadProfile, Mailers(), this).exec();
}

void MainBoard::ShowLastLoad() {
  Run([] { ShowLoadLog(); });
}

void MainBoard::OpenHelp() {
  Run([] { ShowHelp(platform::FolderOf(platform::ProgramPath())); });
}

void MainBoard::ShowAbout() {
  options::AboutDialog(this).exec();
}

void MainBoard::FillChoices() {
  strip_->SetChoices(ContactNames(), AttachmentNames());
}

void MainBoard::SaveLayout() {
  core::GuardedRun("Form_Unload", [this] {
    jet::CommitGroup group(repository::ParameterDb());
    repository::SaveNamedLayout(kGridGroup, kGridNames, grid_->Widths());
    ListFilter filter = Board().Filter;
    strip_->ReadFilter(filter);
    SaveFilter(filter, CountListed());
    StorePlace(*this);
    repository::ParameterDb().EndUnit();
    group.End();
  });
}

void MainBoard::closeEvent(QCloseEvent* event) {
  if (busy_) {
    // What runs is asked to stop; the window closes once it has.
    closeWhenDone_ = true;
    Stop();
    event->ignore();
    return;
  }
  SaveLayout();
  if (text_ != nullptr) text_->hide();
  event->accept();
}

}  // namespace tarnwick::board
