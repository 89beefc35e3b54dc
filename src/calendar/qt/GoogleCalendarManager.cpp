#include "calendar/qt/GoogleCalendarManager.h"

#include <QDesktopServices>
#include <QFile>
#include <QProcess>
#include <QVariantMap>

#include "calendar/GoogleOAuthUtilities.h"
#include "calendar/qt/GoogleLoopback.h"
#include "calendar/qt/NetworkGoogleHttp.h"
#include "calendar/qt/SecretServiceStore.h"
#include "persistence/XdgPaths.h"

namespace daywyn {

GoogleCalendarManager::GoogleCalendarManager(GoogleHttp& http, SecretStore& secrets,
                                             GoogleEndpoints endpoints, Calendar calendar,
                                             Clock clock, RegistrationLoader registration,
                                             BrowserOpener openBrowser, QObject* parent)
    : QObject(parent)
    , http_(http)
    , secrets_(secrets)
    , api_(http, std::move(endpoints), calendar)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock))
    , registration_(std::move(registration))
    , openBrowser_(std::move(openBrowser)) {}

GoogleCalendarManager::~GoogleCalendarManager() {
    *alive_ = false;
}

std::unique_ptr<GoogleCalendarManager> GoogleCalendarManager::forThisDesktop(Calendar calendar,
                                                                             Clock clock) {
    auto* http = new NetworkGoogleHttp();
    auto secrets =
        std::make_unique<SecretServiceStore>("com.daywyn.google-calendar", "accounts.v1");
    auto manager = std::make_unique<GoogleCalendarManager>(*http, *secrets, GoogleEndpoints{},
                                                           std::move(calendar), std::move(clock),
                                                           loadGoogleRegistration, openInBrowser);
    manager->ownedSecrets_ = std::move(secrets);
    // The client goes with the manager, after it.
    http->setParent(manager.get());
    return manager;
}

bool GoogleCalendarManager::isConnecting() const {
    return !loopback_.isNull();
}

void GoogleCalendarManager::restore() {
    const SecretRead read = secrets_.read();
    switch (read.outcome) {
    case SecretRead::Outcome::missing:
        accounts_.clear();
        setError(std::nullopt);
        break;
    case SecretRead::Outcome::found: {
        auto decoded = GoogleAccount::decodeAll(read.secret);
        if (decoded.ok()) {
            accounts_ = std::move(decoded.value());
            setError(std::nullopt);
        } else {
            setError(std::string(kGoogleRestoreFailed) + decoded.error());
        }
        break;
    }
    case SecretRead::Outcome::locked:
    case SecretRead::Outcome::failed:
        setError(std::string(kGoogleRestoreFailed) + std::string(kGoogleUnlockKeyring));
        break;
    }
    Q_EMIT changed();
}

void GoogleCalendarManager::save() {
    const Status saved = secrets_.write(GoogleAccount::encodeAll(accounts_));
    if (!saved.ok()) {
        setError(saved.error());
    }
}

void GoogleCalendarManager::setError(std::optional<std::string> message) {
    errorMessage_ = std::move(message);
}

void GoogleCalendarManager::connectAccount() {
    if (loopback_) {
        return;
    }
    const auto registration = registration_();
    if (!registration.ok()) {
        setError(registration.error());
        Q_EMIT changed();
        return;
    }
    const auto verifier = GoogleOAuthUtilities::random();
    const auto state = GoogleOAuthUtilities::random();
    if (!verifier.ok() || !state.ok()) {
        setError(std::string(kGoogleRandomFailed));
        Q_EMIT changed();
        return;
    }
    auto* loopback = new GoogleLoopback(this);
    const auto port = loopback->start(state.value());
    if (!port.ok()) {
        delete loopback;
        setError(port.error());
        Q_EMIT changed();
        return;
    }
    loopback_ = loopback;
    setError(std::nullopt);
    Q_EMIT changed();

    const std::string redirectUri = "http://127.0.0.1:" + std::to_string(port.value());
    const std::string url = GoogleOAuthUtilities::authorizationUrl(
        api_.endpoints().authorization, registration->clientId, redirectUri, state.value(),
        GoogleOAuthUtilities::challenge(verifier.value()));
    if (!openBrowser_(QUrl(QString::fromStdString(url), QUrl::StrictMode))) {
        finishConnection(std::string(kGoogleBrowserUnavailable));
        return;
    }
    std::weak_ptr<bool> alive = alive_;
    loopback->code([this, alive, registration = registration.value(), verifier = verifier.value(),
                    redirectUri](Result<std::string> code) {
        if (alive.expired()) {
            return;
        }
        if (!code.ok()) {
            finishConnection(code.error());
            return;
        }
        api_.exchangeCode(registration, code.value(), verifier, redirectUri,
                          [this, alive](Result<GoogleToken> token) {
                              if (alive.expired()) {
                                  return;
                              }
                              if (!token.ok()) {
                                  finishConnection(token.error());
                                  return;
                              }
                              api_.profile(token->accessToken, [this, alive, token = token.value()](
                                                                   Result<GoogleProfile> profile) {
                                  if (alive.expired()) {
                                      return;
                                  }
                                  if (!profile.ok()) {
                                      finishConnection(profile.error());
                                      return;
                                  }
                                  auto updated = accountsAfterSignIn(accounts_, token,
                                                                     profile.value(), clock_());
                                  if (!updated.ok()) {
                                      finishConnection(updated.error());
                                      return;
                                  }
                                  accounts_ = std::move(updated.value());
                                  save();
                                  finishConnection(std::nullopt);
                                  refresh();
                              });
                          });
    });
}

void GoogleCalendarManager::finishConnection(std::optional<std::string> error) {
    if (loopback_) {
        GoogleLoopback* loopback = loopback_;
        loopback_ = nullptr;
        loopback->stop(error.value_or(std::string(kGoogleNotGranted)));
        loopback->deleteLater();
    }
    if (error) {
        setError(error);
    }
    Q_EMIT changed();
}

void GoogleCalendarManager::disconnectAccount(const QString& accountID) {
    const std::string id = accountID.toStdString();
    std::erase_if(accounts_, [&id](const GoogleAccount& account) { return account.id == id; });
    save();
    cycle_.forget(id);
    Q_EMIT changed();
    Q_EMIT eventsChanged();
}

void GoogleCalendarManager::setCalendarSelected(const QString& accountID, const QString& calendarID,
                                                bool selected) {
    for (GoogleAccount& account : accounts_) {
        if (account.id != accountID.toStdString()) {
            continue;
        }
        if (selected) {
            account.selected.insert(calendarID.toStdString());
        } else {
            account.selected.erase(calendarID.toStdString());
        }
        save();
        Q_EMIT changed();
        refresh();
        return;
    }
}

void GoogleCalendarManager::refresh() {
    if (cycle_.request()) {
        startPass();
    }
}

void GoogleCalendarManager::refreshIfNeeded() {
    if (accounts_.empty() || loopback_ || cycle_.isRunning()) {
        return;
    }
    if (cycle_.throttle().isDue(clock_(), calendar_)) {
        refresh();
    }
}

void GoogleCalendarManager::startPass() {
    const Instant now = clock_();
    const auto day = cycle_.beginPass(now, calendar_);
    if (!day) {
        return;
    }
    ++refreshPasses_;
    Q_EMIT changed();
    struct Pass {
        std::vector<GoogleAccountOutcome> outcomes;
        std::size_t waiting = 0;
    };
    auto pass = std::make_shared<Pass>();
    pass->waiting = accounts_.size();
    std::optional<GoogleClientRegistration> registration;
    if (auto loaded = registration_(); loaded.ok()) {
        registration = loaded.value();
    }
    std::weak_ptr<bool> alive = alive_;
    const auto finishPass = [this, pass] {
        const bool again = cycle_.endPass(pass->outcomes, clock_(), calendar_);
        setError(cycle_.errorMessage());
        Q_EMIT changed();
        Q_EMIT eventsChanged();
        if (again) {
            startPass();
        }
    };
    if (accounts_.empty()) {
        finishPass();
        return;
    }
    for (const GoogleAccount& account : accounts_) {
        api_.refreshAccount(account, *day, now, registration,
                            [this, alive, pass, finishPass](GoogleAccountRefresh refreshed) {
                                if (alive.expired()) {
                                    return;
                                }
                                // The account may have been disconnected while it refreshed.
                                for (GoogleAccount& current : accounts_) {
                                    if (current.id == refreshed.account.id) {
                                        if (refreshed.accountChanged) {
                                            // The user's selection made meanwhile wins over the
                                            // pass's.
                                            const auto selection = current.selected;
                                            const bool loaded = current.didLoadCalendars == true;
                                            current = refreshed.account;
                                            if (loaded) {
                                                current.selected = selection;
                                            }
                                            save();
                                        }
                                        pass->outcomes.push_back(std::move(refreshed.outcome));
                                        break;
                                    }
                                }
                                if (--pass->waiting == 0) {
                                    finishPass();
                                }
                            });
    }
}

QVariantList GoogleCalendarManager::accountRows() const {
    QVariantList rows;
    for (const GoogleAccount& account : accounts_) {
        QVariantMap row;
        row.insert(QStringLiteral("id"), QString::fromStdString(account.id));
        row.insert(QStringLiteral("email"), QString::fromStdString(account.email));
        const auto message = cycle_.accountMessage(account.id);
        row.insert(QStringLiteral("message"),
                   message ? QString::fromStdString(*message) : QString());
        QVariantList calendars;
        for (const GoogleCalendarChoice& choice : account.calendars) {
            QVariantMap calendar;
            calendar.insert(QStringLiteral("id"), QString::fromStdString(choice.id));
            calendar.insert(QStringLiteral("title"),
                            QString::fromStdString(choice.summary.value_or(choice.id)));
            calendar.insert(QStringLiteral("colorHex"),
                            QString::fromStdString(
                                choice.backgroundColor
                                    ? CalendarEventItem::hexColorFromText(*choice.backgroundColor)
                                    : std::string(kGoogleDefaultColor)));
            calendar.insert(QStringLiteral("selected"), account.selected.contains(choice.id));
            calendars.append(calendar);
        }
        row.insert(QStringLiteral("calendars"), calendars);
        rows.append(row);
    }
    return rows;
}

QString GoogleCalendarManager::errorMessageText() const {
    return errorMessage_ ? QString::fromStdString(*errorMessage_) : QString();
}

QString GoogleCalendarManager::registrationProblem() const {
    const auto registration = registration_();
    return registration.ok() ? QString() : QString::fromStdString(registration.error());
}

bool openInBrowser(const QUrl& url) {
    // Without a desktop integration of its own (a minimal or offscreen platform) Qt
    // opens nothing; xdg-open is what it would use anyway.
    return QDesktopServices::openUrl(url) ||
           QProcess::startDetached(QStringLiteral("xdg-open"),
                                   {QString::fromUtf8(url.toEncoded())});
}

Result<GoogleClientRegistration> loadGoogleRegistration() {
    QStringList candidates;
    if (const auto config = daywynFolder(XdgBase::config)) {
        candidates << QString::fromStdString(config.value()) +
                          QStringLiteral("/GoogleDesktop.json");
    }
    if (const QString built = QStringLiteral(DAYWYN_GOOGLE_REGISTRATION); !built.isEmpty()) {
        candidates << built;
    }
    for (const QString& path : candidates) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            continue;
        }
        const QByteArray bytes = file.read(1 << 20);
        auto decoded = GoogleClientRegistration::decode(
            std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
        if (decoded.ok()) {
            return decoded;
        }
    }
    return Result<GoogleClientRegistration>::failure(std::string(kGoogleRegistrationMissing));
}

} // namespace daywyn
