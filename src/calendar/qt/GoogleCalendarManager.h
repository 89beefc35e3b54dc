#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QObject>
#include <QPointer>
#include <QUrl>
#include <QVariantList>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "base/Result.h"
#include "calendar/CalendarEventItem.h"
#include "calendar/GoogleAccount.h"
#include "calendar/GoogleApi.h"
#include "calendar/GoogleCalendarRules.h"
#include "calendar/GoogleHttp.h"
#include "calendar/GoogleReplies.h"
#include "calendar/SecretStore.h"

namespace daywyn {

class GoogleLoopback;

// The directly connected Google accounts: sign-in in the browser, the accounts blob in
// the secret store (tokens never go anywhere else), and today's events of every
// account's selected calendars, merged. Accounts refresh side by side; one refresh
// pass runs at a time, and one asked for meanwhile becomes one more pass. An account
// that fails keeps today's last good events.
class GoogleCalendarManager : public QObject {
    Q_OBJECT
    // Per account: {id, email, message, calendars: [{id, title, colorHex, selected}]}.
    Q_PROPERTY(QVariantList accounts READ accountRows NOTIFY changed)
    Q_PROPERTY(bool isConnecting READ isConnecting NOTIFY changed)
    Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY changed)
    Q_PROPERTY(QString errorMessage READ errorMessageText NOTIFY changed)
    // The sentence shown instead of the connect button when this build cannot sign in.
    Q_PROPERTY(QString registrationProblem READ registrationProblem NOTIFY changed)

public:
    using RegistrationLoader = std::function<Result<GoogleClientRegistration>()>;
    using BrowserOpener = std::function<bool(const QUrl&)>;

    // The client, the store and the functions must outlive the manager.
    GoogleCalendarManager(GoogleHttp& http, SecretStore& secrets, GoogleEndpoints endpoints,
                          Calendar calendar, Clock clock, RegistrationLoader registration,
                          BrowserOpener openBrowser, QObject* parent = nullptr);
    ~GoogleCalendarManager() override;

    // The manager of the running app: Qt Network, the Secret Service item
    // ("com.daywyn.google-calendar", "accounts.v1"), Google's real endpoints, the
    // registration file and the default browser.
    static std::unique_ptr<GoogleCalendarManager> forThisDesktop(Calendar calendar, Clock clock);

    // Reads the accounts from the secret store (once, at start-up).
    void restore();
    // Signs in another account (or the same one again) through the browser.
    Q_INVOKABLE void connectAccount();
    // Forgets one account and its events; its access is not revoked at Google.
    Q_INVOKABLE void disconnectAccount(const QString& accountID);
    Q_INVOKABLE void setCalendarSelected(const QString& accountID, const QString& calendarID,
                                         bool selected);
    // Refreshes every account now (or once more after the pass under way).
    Q_INVOKABLE void refresh();
    // Refreshes when the throttle allows: the maintenance timer and opening the drawer.
    void refreshIfNeeded();

    const std::vector<GoogleAccount>& accounts() const { return accounts_; }
    const std::vector<CalendarEventItem>& events() const { return cycle_.events(); }
    bool isConnecting() const;
    bool isRefreshing() const { return cycle_.isRunning(); }
    const std::optional<std::string>& errorMessage() const { return errorMessage_; }
    // Refresh passes started so far.
    int refreshPasses() const { return refreshPasses_; }

    QVariantList accountRows() const;
    QString errorMessageText() const;
    QString registrationProblem() const;

Q_SIGNALS:
    void changed();
    // The merged events changed.
    void eventsChanged();

private:
    void startPass();
    void save();
    void finishConnection(std::optional<std::string> error);
    void setError(std::optional<std::string> message);

    GoogleHttp& http_;
    SecretStore& secrets_;
    GoogleApi api_;
    Calendar calendar_;
    Clock clock_;
    RegistrationLoader registration_;
    BrowserOpener openBrowser_;
    std::vector<GoogleAccount> accounts_;
    GoogleRefreshCycle cycle_;
    std::optional<std::string> errorMessage_;
    QPointer<GoogleLoopback> loopback_;
    int refreshPasses_ = 0;
    // The store of forThisDesktop(), kept as long as the manager.
    std::unique_ptr<SecretStore> ownedSecrets_;
    // Completions of requests under way hold this weakly: they do nothing once the
    // manager is gone.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

// The registration file of this build: $XDG_CONFIG_HOME/Daywyn/GoogleDesktop.json, else
// the file named when the build was configured; "This build is missing its Google
// desktop registration." when neither reads.
Result<GoogleClientRegistration> loadGoogleRegistration();

// Opens the address in the user's default browser; false when nothing could.
bool openInBrowser(const QUrl& url);

} // namespace daywyn
