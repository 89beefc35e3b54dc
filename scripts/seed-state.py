#!/usr/bin/env python3
"""Writes a Daywyn state file with tasks in every section of today's drawer, relative
to the current time in the local zone. With --bulk N it adds N older completed tasks
(with sessions and checklists), the shape of a long-used planner.

Usage: seed-state.py PATH [--bulk N]
"""
import datetime as dt
import json
import random
import sys
import uuid


def iso(moment):
    return moment.astimezone(dt.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def task(title, created, **fields):
    record = {
        "id": str(uuid.uuid4()).upper(),
        "title": title,
        "createdAt": iso(created),
        "isComplete": False,
        "sessions": [],
        "scheduledBudgetAlerts": [],
    }
    for key, value in fields.items():
        record[key] = iso(value) if isinstance(value, dt.datetime) else value
    return record


def session(start, minutes):
    return {"id": str(uuid.uuid4()).upper(), "start": iso(start),
            "end": iso(start + dt.timedelta(minutes=minutes))}


def checklist(*items):
    return [{"id": str(uuid.uuid4()).upper(), "title": title, "isComplete": done}
            for title, done in items]


def main():
    path = sys.argv[1]
    bulk = int(sys.argv[sys.argv.index("--bulk") + 1]) if "--bulk" in sys.argv else 0
    now = dt.datetime.now().astimezone()
    today = now.replace(hour=0, minute=0, second=0, microsecond=0)
    at = lambda days, hour, minute=0: today + dt.timedelta(days=days, hours=hour, minutes=minute)
    early = min(now - dt.timedelta(minutes=30), at(0, 7))

    tasks = [
        task("Finish the quarterly report", early, priorityRank=1, estimatedMinutes=90,
             sessions=[session(early, 40)]),
        task("Review Amara's pull request", early, priorityRank=2, estimatedMinutes=20),
        task("Write the release notes", early, estimatedMinutes=30,
             liveSessionStartedAt=now - dt.timedelta(minutes=12, seconds=20)),
        task("Call the dentist to move Tuesday's appointment", early,
             scheduledStart=at(0, 15, 30), estimatedMinutes=10),
        task("Plan next week", early, estimatedMinutes=25, sessions=[session(early, 18)],
             checklist=checklist(("Look at the calendar", True), ("Pick three goals", True),
                                 ("Block focus time", False), ("Book the gym", False),
                                 ("Tell the team", False))),
        task("Renew the passport", at(-3, 9), scheduledDay=at(-1, 0)),
        task("Reply to the landlord about the boiler", at(-2, 18)),
        task("Team offsite", early, scheduledStart=at(1, 10), scheduledEnd=at(1, 16)),
        task("Book flights for March", early, scheduledDay=at(3, 0), estimatedMinutes=15),
        task("Morning run", early, isComplete=True, completedAt=min(now, at(0, 7, 40)),
             sessions=[session(early - dt.timedelta(minutes=40), 32)]),
        task("Pay the electricity bill", early, isComplete=True,
             completedAt=now - dt.timedelta(minutes=5)),
    ]
    rng = random.Random(7)
    for i in range(bulk):
        created = today - dt.timedelta(days=rng.randint(2, 400), hours=rng.randint(0, 10))
        done = created + dt.timedelta(hours=rng.randint(1, 30))
        tasks.insert(0, task(
            f"Archived task {i + 1}: follow up on item {rng.randint(100, 999)}", created,
            isComplete=True, completedAt=done, estimatedMinutes=rng.choice([15, 25, 45, 60]),
            sessions=[session(created + dt.timedelta(minutes=10 * k), rng.randint(5, 30))
                      for k in range(rng.randint(0, 3))],
            checklist=checklist(*[(f"Step {k + 1}", True) for k in range(rng.randint(0, 3))])))

    state = {
        "version": 2,
        "tasks": tasks,
        "reports": [],
        "preferences": {
            "activeHoursEnd": 21, "activeHoursStart": 9, "budgetNotificationsEnabled": False,
            "budgetWarningLeadMinutes": 5, "calendarIntegrationEnabled": False,
            "dailyReviewEnabled": False, "dailyReviewHour": 21, "dailyReviewMinute": 0,
            "defaultTaskMinutes": 25, "edgeAnchor": "topLeft", "endWarningLeadMinutes": 5,
            "scheduledEndAlertsEnabled": False, "selectedCalendarIdentifiers": [],
            "taskRemindersEnabled": False, "unfinishedReminderCadence": 0,
        },
    }
    with open(path, "w", encoding="utf-8") as out:
        json.dump(state, out, indent=2, sort_keys=True)


if __name__ == "__main__":
    main()
