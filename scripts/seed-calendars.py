#!/usr/bin/env python3
"""Seeds two calendars with today's events for screenshots, and turns calendar
integration on in a state file: a Team calendar as one .ics file and a Personal
calendar as a vdir folder (one event per file, a displayname and a color file).

    scripts/seed-calendars.py CALENDARS_FOLDER STATE_FILE
"""
import datetime
import json
import os
import sys


def stamp(moment):
    return moment.strftime("%Y%m%dT%H%M%S")


def event(uid, title, start, end, extra=()):
    lines = ["BEGIN:VEVENT", f"UID:{uid}", f"SUMMARY:{title}"]
    if isinstance(start, datetime.date) and not isinstance(start, datetime.datetime):
        lines += [f"DTSTART;VALUE=DATE:{start:%Y%m%d}", f"DTEND;VALUE=DATE:{end:%Y%m%d}"]
    else:
        # Floating times: the reader's own clock, whatever its zone.
        lines += [f"DTSTART:{stamp(start)}", f"DTEND:{stamp(end)}"]
    lines += list(extra) + ["END:VEVENT"]
    return lines


def calendar(lines, name=None, color=None):
    head = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Daywyn screenshots//EN"]
    if name:
        head.append(f"X-WR-CALNAME:{name}")
    if color:
        head.append(f"COLOR:{color}")
    return "\r\n".join(head + lines + ["END:VCALENDAR", ""])


def main():
    folder, state_path = sys.argv[1], sys.argv[2]
    today = datetime.date.today()
    at = lambda h, m=0, days=0: datetime.datetime.combine(today, datetime.time(h, m)) + \
        datetime.timedelta(days=days)
    os.makedirs(folder, exist_ok=True)
    team = event("standup", "Team standup", at(9, 30), at(9, 45),
                 ["URL:https://meet.example.org/standup"])
    team += event("review", "Design review", at(14), at(15))
    team += event("release", "Release night", at(23), at(1, 0, days=1))
    with open(os.path.join(folder, "team.ics"), "w", encoding="utf-8") as out:
        out.write(calendar(team, "Team", "#3465a4"))

    personal = os.path.join(folder, "personal")
    os.makedirs(personal, exist_ok=True)
    with open(os.path.join(personal, "displayname"), "w", encoding="utf-8") as out:
        out.write("Personal\n")
    with open(os.path.join(personal, "color"), "w", encoding="utf-8") as out:
        out.write("#e66100\n")
    for uid, lines in (
            ("birthday", event("birthday", "Ama's birthday", today,
                               today + datetime.timedelta(days=1))),
            ("dentist", event("dentist", "Dentist", at(17, 30), at(18)))):
        with open(os.path.join(personal, uid + ".ics"), "w", encoding="utf-8") as out:
            out.write(calendar(lines))

    with open(state_path, encoding="utf-8") as source:
        state = json.load(source)
    state["preferences"]["calendarIntegrationEnabled"] = True
    state["preferences"]["selectedCalendarIdentifiers"] = ["ics:personal", "ics:team.ics"]
    with open(state_path, "w", encoding="utf-8") as out:
        json.dump(state, out, indent=2, sort_keys=True)


if __name__ == "__main__":
    main()
