#!/usr/bin/env python3
"""Writes the task-phrase language model (ARPA trigram text) that the recogniser mixes
with its generic English model: short imperative to-do phrases with people, days,
times, numbers and durations, as people speak them into a planner.

The corpus is generated from the word lists below with a fixed seed, so the model is
the same on every build; only words the pronunciation dictionary knows are kept.
Smoothing: interpolated absolute discounting, written in ARPA backoff form.
"""
import argparse
import collections
import math
import random

VERBS_WITH_PERSON = ["call", "email", "text", "phone", "message", "meet", "visit", "thank",
                     "remind", "ask", "tell", "invite", "pay", "help", "see", "reply to",
                     "write to", "catch up with", "check in with", "follow up with"]
PEOPLE = ["mom", "dad", "the dentist", "the doctor", "the bank", "the plumber", "the landlord",
          "the school", "the vet", "my boss", "the team", "grandma", "my sister", "my brother",
          "the office", "the client", "the insurance company", "the mechanic", "sam", "alex",
          "maria", "tom", "lisa", "mike", "emma", "james", "sarah", "john", "david", "anna",
          "kate", "peter", "paul", "chris", "the accountant", "the landlord", "the neighbours"]
VERBS_WITH_THING = ["buy", "get", "order", "pick up", "drop off", "return", "fix", "clean",
                    "wash", "write", "read", "finish", "send", "review", "prepare", "print",
                    "sign", "pay", "book", "cancel", "renew", "update", "check", "plan",
                    "make", "cook", "bake", "water", "feed", "walk", "take out", "put away",
                    "sort", "pack", "file", "submit", "schedule", "organize", "tidy",
                    "repair", "replace", "charge", "back up", "install", "download",
                    "research", "draft", "edit", "practice", "study", "learn", "paint",
                    "empty", "fill", "collect", "look for", "find", "bring", "take"]
THINGS = ["milk", "bread", "eggs", "coffee", "groceries", "the report", "the slides",
          "the invoice", "the bill", "the rent", "the taxes", "the tax return", "the car",
          "the bike", "the kitchen", "the bathroom", "the house", "the garden", "the dishes",
          "the laundry", "the trash", "the recycling", "the plants", "the dog", "the cat",
          "the kids", "the package", "the parcel", "the letter", "the form", "the contract",
          "the presentation", "the budget", "the project plan", "the meeting notes",
          "the agenda", "the proposal", "a book", "the library books", "a present",
          "a birthday present", "a card", "flowers", "tickets", "a table", "a flight",
          "a hotel", "an appointment", "a haircut", "the passport", "my passport",
          "the insurance", "the membership", "the subscription", "the code", "the tests",
          "the pull request", "the website", "the emails", "my email", "the inbox",
          "the photos", "the files", "the backup", "the computer", "the phone", "the printer",
          "ink", "batteries", "medicine", "vitamins", "dinner", "lunch", "breakfast",
          "a cake", "the fridge", "the shelves", "the tap", "the light", "the door",
          "the window", "the heating", "the budget spreadsheet", "chapter one", "chapter two",
          "chapter three", "chapter four", "chapter five", "the essay", "homework",
          "the newsletter", "the blog post", "piano", "guitar", "spanish", "french",
          "the shopping list", "the calendar", "the week", "the weekend", "the trip"]
ACTIVITIES = ["go for a run", "go to the gym", "go shopping", "go to the bank",
              "go to the post office", "go to the pharmacy", "do yoga", "do the dishes",
              "do the laundry", "do homework", "take a walk", "take a break", "meditate",
              "stretch", "work out", "go swimming", "go to bed early", "have lunch with sam",
              "stand up meeting", "team meeting", "doctor's appointment", "dentist appointment",
              "make a doctor's appointment", "make a dentist appointment", "pick up the kids",
              "pick up the dry cleaning", "walk the dog", "feed the cat", "check the mail",
              "check the flight times", "plan the week", "review the week", "clean up"]
CONNECTORS = ["about", "for", "with", "to", "from", "on", "at", "before", "after", "by"]
TOPICS = ["the budget", "the weekend", "the trip", "the meeting", "the project", "dinner",
          "the party", "the invoice", "the report", "the plan", "the contract", "the holiday"]
NUMBER_WORDS = ["one", "two", "three", "four", "five", "six", "seven", "eight", "nine", "ten",
                "eleven", "twelve"]
MINUTE_WORDS = ["fifteen", "thirty", "forty five", "o'clock", "ten", "twenty", "forty",
                "five", "fifty", "twenty five", "thirty five"]
DAYS = ["today", "tomorrow", "tonight", "this morning", "this afternoon", "this evening",
        "on monday", "on tuesday", "on wednesday", "on thursday", "on friday", "on saturday",
        "on sunday", "next week", "by friday", "by monday", "by tomorrow", "this weekend"]
DURATIONS = ["for five minutes", "for ten minutes", "for fifteen minutes",
             "for twenty minutes", "for twenty five minutes", "for thirty minutes",
             "for forty minutes", "for forty five minutes", "for an hour", "for one hour",
             "for two hours", "for three hours", "for half an hour", "for an hour and a half",
             "for ninety minutes", "for sixty minutes"]
SEPARATORS = ["next task", "new task", "another task", "next item", "then", "and then",
              "first", "second", "third"]


def time_phrase(rng):
    hour = rng.choice(NUMBER_WORDS)
    shape = rng.random()
    if shape < 0.35:
        return f"at {hour} {rng.choice(['am', 'pm'])}"
    if shape < 0.7:
        return f"at {hour} {rng.choice(MINUTE_WORDS)}"
    if shape < 0.8:
        return f"at {hour} {rng.choice(MINUTE_WORDS)} {rng.choice(['am', 'pm'])}"
    if shape < 0.9:
        return f"at {hour}"
    return rng.choice(["at noon", "at midnight", "in the morning", "in the afternoon",
                       "in the evening", "at lunch", "after work", "before work"])


def core_phrase(rng):
    shape = rng.random()
    if shape < 0.3:
        text = f"{rng.choice(VERBS_WITH_PERSON)} {rng.choice(PEOPLE)}"
        if rng.random() < 0.3:
            text += f" about {rng.choice(TOPICS)}"
        return text
    if shape < 0.75:
        text = f"{rng.choice(VERBS_WITH_THING)} {rng.choice(THINGS)}"
        if rng.random() < 0.2:
            text += f" {rng.choice(CONNECTORS)} {rng.choice(PEOPLE + TOPICS)}"
        return text
    return rng.choice(ACTIVITIES)


def sentence(rng):
    words = [core_phrase(rng)]
    extras = [(0.35, lambda: rng.choice(DAYS)), (0.35, lambda: time_phrase(rng)),
              (0.25, lambda: rng.choice(DURATIONS))]
    for chance, make in extras:
        if rng.random() < chance:
            words.append(make())
    if rng.random() < 0.15:
        words.insert(0, rng.choice(SEPARATORS))
    if rng.random() < 0.15:
        words.append(rng.choice(SEPARATORS) + " " + core_phrase(rng))
    return " ".join(words).split()


def known_words(dictionary_path):
    words = set()
    with open(dictionary_path, encoding="utf-8", errors="replace") as f:
        for line in f:
            if line.strip():
                words.add(line.split()[0].split("(")[0])
    return words


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--dictionary", required=True)
    parser.add_argument("--output", required=True)
    parser.add_argument("--sentences", type=int, default=30000)
    args = parser.parse_args()

    known = known_words(args.dictionary)
    rng = random.Random(20261125)
    counts = [collections.Counter() for _ in range(3)]
    for _ in range(args.sentences):
        words = sentence(rng)
        if any(w not in known for w in words):
            continue
        padded = ["<s>"] + words + ["</s>"]
        for i in range(len(padded)):
            for n in range(3):
                if i - n >= 0:
                    counts[n][tuple(padded[i - n:i + 1])] += 1

    discount = 0.5
    unigram_total = sum(c for g, c in counts[0].items() if g != ("<s>",))
    vocabulary = sorted(g[0] for g in counts[0])
    probability = {}
    for gram, count in counts[0].items():
        probability[gram] = (count + 1) / (unigram_total + len(vocabulary))

    def history_stats(order):
        totals = collections.Counter()
        followers = collections.Counter()
        for gram, count in counts[order].items():
            totals[gram[:-1]] += count
            followers[gram[:-1]] += 1
        return totals, followers

    backoff = {}
    for order in (1, 2):
        totals, followers = history_stats(order)
        for history in totals:
            backoff[history] = discount * followers[history] / totals[history]
        for gram, count in counts[order].items():
            history = gram[:-1]
            lower = probability[gram[1:]]
            probability[gram] = (max(count - discount, 0) / totals[history] +
                                 backoff[history] * lower)

    def log10(p):
        return math.log10(p) if p > 0 else -99.0

    with open(args.output, "w", encoding="utf-8") as out:
        out.write("\\data\\\n")
        for n in range(3):
            out.write(f"ngram {n + 1}={len(counts[n])}\n")
        for n in range(3):
            out.write(f"\n\\{n + 1}-grams:\n")
            for gram in sorted(counts[n]):
                p = -99.0 if gram == ("<s>",) else log10(probability[gram])
                line = f"{p:.4f}\t{' '.join(gram)}"
                if n < 2 and gram[-1] != "</s>":
                    line += f"\t{log10(backoff.get(gram, 1.0)):.4f}"
                out.write(line + "\n")
        out.write("\n\\end\\\n")


if __name__ == "__main__":
    main()
