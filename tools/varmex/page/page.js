// The page of an installation comes alive. Texts reach it through textContent alone; what things
// mean is told by the data that the page was written with.
"use strict";

(() => {
  const make = (name, attributes = {}, ...children) => {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    element.append(...children);
    return element;
  };
  const byId = (id) => document.getElementById(id);
  const dataOf = (element) => JSON.parse(element.textContent);
  const say = (text) => { byId("said").textContent = text; };
  const [search, hits] = [byId("search"), byId("hits")];

  // ---- The chassis and what their pictures show ----

  class Rack {
    constructor(section) {
      this.section = section;
      this.number = Number(section.dataset.chassis);
      this.picture = section.querySelector("svg");
    }

    // Read at the first need: most chassis of a large installation are never pointed at.
    get data() {
      if (!this.read) {
        this.read = dataOf(this.section.querySelector("script"));
        this.slots = new Map(this.read.Slots.map((slot) => [slot.SlotNumber, slot]));
      }
      return this.read;
    }

    slot(number) { return this.data && this.slots.get(number); }
    groups(key) { return this.picture.querySelectorAll(`[data-key="${key}"]`); }
    slotsWhere(fits) { return this.data.Slots.filter(fits).map((slot) => slot.SlotNumber); }
  }

  const racks = new Map();
  for (const section of document.querySelectorAll("section.rack")) {
    const rack = new Rack(section);
    racks.set(rack.number, rack);
  }

  // What a group of a picture shows, by its key: "slot 7", "star 1 7".
  const targetOf = (element) => {
    const key = element.closest?.("[data-key]")?.dataset.key.replace("module", "slot");
    const section = element.closest?.("section.rack");
    if (!key || !section || /^(stub|guide)/.test(key)) return null;
    return { rack: racks.get(Number(section.dataset.chassis)), key };
  };

  // What a table of functions, one for each kind, answers about a target.
  const answer = (table, { rack, key }) => {
    const [kind, ...numbers] = key.split(" ");
    return table[kind](rack, ...numbers.map(Number));
  };

  const trigger = {
    star: { name: "Star trigger", line: "line", number: "StarTriggerNumber", of: "StarTriggerLine",
            controller: "StarTriggerControllerName" },
    dstar: { name: "DStar trigger", line: "set", number: "DStarTriggerNumber", of: "DStarTriggerSet",
             controller: "DStarTriggerControllerName" },
  };

  const busSlots = (rack, bus) => rack.slotsWhere((slot) => slot.TriggerBusNumber === bus);
  const onTrigger = (rack, kind, number) =>
    rack.slotsWhere((slot) => slot[trigger[kind].number] === number);
  const controllers = (rack, kind, number) => onTrigger(rack, kind, number)
    .filter((slot) => trigger[kind].controller in rack.slot(slot));
  const bridgesAt = (rack, bus) => rack.data.TriggerBridges.filter(
    (bridge) => bridge.BridgeSourceTriggerBus === bus || bridge.BridgeDestinationTriggerBus === bus);
  const bridgesOf = (rack, number) =>
    rack.data.TriggerBridges.filter((bridge) => bridge.BridgeNumber === number);

  // The keys of all groups that belong to a slot, a bus and so on.
  const slotKeys = (rack, number) =>
    [`slot ${number}`, `module ${rack.slot(number)?.OccupyingModuleSlot ?? number}`];
  const busKeys = (rack, bus) => bus === undefined ? [] : [`bus ${bus}`,
    ...busSlots(rack, bus).flatMap((slot) => [`stub ${slot}`, ...slotKeys(rack, slot)])];

  // Of a slot's line all that its controller can reach it from, of the controller's all lines.
  const starKeys = (rack, kind, star, slot) => {
    if (star === undefined) return [];
    const drivers = controllers(rack, kind, star);
    const isAll = slot === undefined || drivers.includes(slot);
    return [`${kind} ${star}`, ...onTrigger(rack, kind, star)
      .filter((other) => isAll || other === slot || drivers.includes(other))
      .flatMap((other) => [`${kind} ${star} ${other}`, `guide ${other}`, ...slotKeys(rack, other)])];
  };

  const wiredTo = {
    slot(rack, number) {
      const slot = rack.slot(number) ?? {};
      return [...slotKeys(rack, number), ...busKeys(rack, slot.TriggerBusNumber),
              ...Object.keys(trigger).flatMap((kind) =>
                starKeys(rack, kind, slot[trigger[kind].number], number))];
    },
    bus: (rack, number) => [...busKeys(rack, number), ...bridgesAt(rack, number)
      .flatMap((bridge) => wiredTo.bridge(rack, bridge.BridgeNumber))],
    bridge: (rack, number) => [`bridge ${number}`, ...bridgesOf(rack, number).flatMap((bridge) =>
      [`bus ${bridge.BridgeSourceTriggerBus}`, `bus ${bridge.BridgeDestinationTriggerBus}`])],
    star: (rack, ...line) => starKeys(rack, "star", ...line),
    dstar: (rack, ...line) => starKeys(rack, "dstar", ...line),
  };

  // ---- Light on what is wired to a target, and its details ----

  const chosen = [];
  let lit = [];
  let isPassing = false; // what is shown: it is only pointed at, or has the focus

  const lightKeys = (rack, keys) => {
    rack.picture.classList.add("focused");
    lit.push(rack.picture);
    for (const key of new Set(keys)) {
      for (const group of rack.groups(key)) {
        group.classList.add("lit");
        lit.push(group);
      }
    }
  };

  const light = (targets) => {
    for (const element of lit) element.classList.remove("lit", "focused");
    lit = [];
    for (const target of targets) lightKeys(target.rack, answer(wiredTo, target));
    for (const way of waysBetween(targets)) {
      lightKeys(way.rack, way.bridges.flatMap((number) => wiredTo.bridge(way.rack, number)));
    }
  };

  const table = (rows) => make("table", {}, ...rows.map(([name, value]) =>
    make("tr", {}, make("th", { scope: "row" }, name), make("td", {}, value))));

  const attributesOf = (item) => Object.entries(item).filter(([name]) => /^[A-Z]/.test(name))
    .filter(([, value]) => typeof value !== "object");
  const marksOf = (item) => Object.entries(item.failures ?? {}).map(([name, { mark }]) => [name, mark]);
  const faultsOf = (item) => item.faults.map((line) => make("p", { class: "fault" }, line));

  const allAttributes = (items) => make("details", {}, make("summary", {}, "All attributes"),
    ...items.flatMap(([title, item]) =>
      [make("h4", {}, title), table([...attributesOf(item), ...marksOf(item)])]));

  const link = (rack, slot) => make("a", { href: `#${rack.number}/${slot}` }, `${rack.number}/${slot}`);
  const slotLinks = (rack, slots) => slots.flatMap((slot, n) => [n > 0 ? ", " : "", link(rack, slot)]);

  const findingsAbout = (rack, key) => {
    const found = rack.section.querySelectorAll(`[data-about~="${key.replace(" ", "-")}"]`);
    const copies = [...found].map((item) => item.cloneNode(true));
    return copies.length ? [make("ul", { class: "findings" }, ...copies)] : [];
  };

  const bridgeRow = ({ BridgeNumber: number, told: words }) => [`Bridge ${number}`, words];

  const told = {
    slot(rack, number) {
      const slot = rack.slot(number);
      if (!slot) return [make("h3", {}, `Slot ${rack.number}/${number}`)];
      const items = [["Slot", slot], ...slot.Devices.map((device) => ["Function", device])];
      return [make("h3", {}, "Slot ", link(rack, number)), table(slot.told), ...faultsOf(slot),
              ...findingsAbout(rack, `slot ${number}`), allAttributes(items)];
    },
    bus(rack, number) {
      const slots = busSlots(rack, number);
      const names = new Set(slots.map((slot) => rack.slot(slot).TriggerBusName).filter(Boolean));
      return [make("h3", {}, `Chassis ${rack.number}, trigger bus ${number}`),
              make("p", {}, "Slots ", ...slotLinks(rack, slots)),
              table([...[...names].map((name) => ["Name", name]),
                     ...bridgesAt(rack, number).map(bridgeRow)]),
              ...findingsAbout(rack, `bus ${number}`)];
    },
    bridge(rack, number) {
      const bridges = bridgesOf(rack, number);
      return [make("h3", {}, `Chassis ${rack.number}, bridge ${number}`), table(bridges.map(bridgeRow)),
              ...bridges.flatMap(faultsOf), ...findingsAbout(rack, `bridge ${number}`),
              allAttributes(bridges.map((bridge) => ["Bridge", bridge]))];
    },
    star: (rack, ...line) => toldOfStar(rack, "star", ...line),
    dstar: (rack, ...line) => toldOfStar(rack, "dstar", ...line),
  };

  function toldOfStar(rack, kind, number, slot) {
    const names = trigger[kind];
    const drivers = controllers(rack, kind, number);
    const rows = onTrigger(rack, kind, number)
      .filter((other) => slot === undefined || slot === other || drivers.includes(slot))
      .filter((other) => names.of in rack.slot(other))
      .map((other) => [`${names.line} ${rack.slot(other)[names.of]}`, link(rack, other)]);
    const failure = rack.data.Slots.map((one) => one.failures?.[names.number]).find(Boolean);
    const none = failure ? `none that can be read. ${failure.sentence}` : "none";
    return [make("h3", {}, `Chassis ${rack.number}, ${names.name} ${number}`),
            make("p", {}, "Controller: ", ...(drivers.length ? slotLinks(rack, drivers) : [none])),
            table(rows), ...findingsAbout(rack, `${kind} ${number}`)];
  }

  // ---- The trigger lines between two slots ----

  const placeOf = ({ rack, key }) => `${rack.number}/${key.split(" ")[1]}`;
  const slotOf = ({ rack, key }) => {
    const number = Number(key.split(" ")[1]);
    return rack.slot(number) ?? { SlotNumber: number };
  };

  // There and back, for two slots of a chassis.
  function waysBetween([first, second]) {
    if (!second || first.rack !== second.rack) return [];
    return [[first, second], [second, first]].flatMap((pair) => {
      const [from, to] = pair.map((target) => slotOf(target).TriggerBusNumber);
      const way = first.rack.data.ways[`${from}>${to}`];
      const head = `From ${placeOf(pair[0])} (bus ${from}) to ${placeOf(pair[1])} (bus ${to})`;
      return way ? [{ rack: first.rack, head, ...way }] : [];
    });
  }

  const busSentences = (rack, ends) => {
    const alone = ends.find((slot) => slot.TriggerBusNumber === undefined);
    if (alone) return [`Slot ${rack.number}/${alone.SlotNumber} ${alone.noBus ?? "is on no trigger bus"}.`];
    const [a, b] = ends.map((slot) => slot.TriggerBusNumber);
    if (a === b) return [`Both are on trigger bus ${a}, and share its lines 0-7.`];
    const ways = waysBetween(chosen);
    if (!ways.length) return ["Not worked out for so many buses; varmex triggers tells it."];
    return [...ways.flatMap((way) => way.told.map((words) => `${way.head} ${words}`)), ...rack.data.unread];
  };

  const starSentences = (rack, ends) => Object.values(trigger).flatMap((names) => {
    const star = ends[0][names.number];
    if (star === undefined || ends[1][names.number] !== star) return [];
    const roles = ends.map((end) => `${rack.number}/${end.SlotNumber} is ` +
      [names.controller in end && "the controller", names.of in end && `${names.line} ${end[names.of]}`]
        .filter(Boolean).join(" and "));
    const isDirect = ends.some((end, n) => names.controller in end && names.of in ends[1 - n]);
    const joint = isDirect ? "this line joins the two" : "the controller can join the two";
    return [`${names.name} ${star}: ${roles.join(", ")}; ${joint}.`];
  });

  const linesBetween = ([first, second]) => {
    const { rack } = first;
    const ends = [first, second].map(slotOf);
    const unread = ends.flatMap((end) => end.unread ?? []);
    const sentences = rack === second.rack
      ? [...busSentences(rack, ends), ...starSentences(rack, ends), ...unread]
      : ["They are in different chassis, which share no trigger lines."];
    return make("section", { id: "between" },
      make("h3", {}, `Trigger lines between ${placeOf(first)} and ${placeOf(second)}`),
      make("ul", {}, ...sentences.map((sentence) => make("li", {}, sentence))));
  };

  const details = byId("details");
  const help = [...details.childNodes];
  const close = make("button", { type: "button", class: "close", "aria-label": "Close details" }, "\u00d7");

  const show = (target) => {
    const shown = target ? [target] : chosen;
    light(shown);
    isPassing = Boolean(target);
    const parts = shown.flatMap((one) => answer(told, one));
    if (shown.length === 2) parts.unshift(linesBetween(shown));
    details.replaceChildren(...(parts.length ? [close, ...parts] : help));
    details.classList.toggle("open", parts.length > 0);
  };

  const chosenAt = ({ rack, key }) => chosen.findIndex((one) => one.rack === rack && one.key === key);
  const groupsOf = (targets) => targets.flatMap(({ rack, key }) => [...rack.groups(key)]);
  const lastChosen = () => groupsOf(chosen.slice(-1))[0];

  const markChosen = () => {
    for (const group of document.querySelectorAll("svg .chosen")) {
      group.classList.remove("chosen");
      group.removeAttribute("aria-pressed");
    }
    for (const group of groupsOf(chosen)) {
      group.classList.add("chosen");
      group.setAttribute("aria-pressed", "true");
    }
    show(null);
    const last = chosen[chosen.length - 1];
    const place = last?.key.startsWith("slot") ? `#${placeOf(last)}` : location.pathname + location.search;
    history.replaceState(null, "", place);
    if (chosen.length === 2) say(byId("between").textContent);
    else say(last ? `${details.querySelector("h3").textContent} chosen.` : "");
  };

  // A second slot joins the first one. Anything else begins anew; what is chosen is let go.
  const choose = (target) => {
    const at = chosenAt(target);
    if (at >= 0) {
      chosen.splice(at, 1);
    } else {
      const isPair = chosen.length === 1 && [...chosen, target].every(({ key }) => key.startsWith("slot"));
      chosen.splice(isPair ? 1 : 0, 2, target);
    }
    markChosen();
  };

  const chooseNothing = () => {
    if (details.contains(document.activeElement)) lastChosen()?.focus({ preventScroll: true });
    chosen.length = 0;
    markChosen();
  };

  // ---- Mouse and keyboard ----

  const main = document.querySelector("main");

  main.addEventListener("pointerover", (event) => {
    const target = event.pointerType !== "touch" && targetOf(event.target);
    if (target) show(target);
  });
  main.addEventListener("click", (event) => {
    const target = targetOf(event.target);
    if (target) choose(target);
  });
  main.addEventListener("focusin", (event) => {
    const target = targetOf(event.target);
    if (!target || !event.target.matches(":focus-visible")) return;
    moveTabStop(target.rack, event.target);
    show(target);
  });
  details.addEventListener("click", (event) => { if (event.target === close) chooseNothing(); });

  // When pointer or focus leave the picture, and are not on the way to what is told, the choice is shown.
  const leave = ({ type, target, relatedTarget: next }) => {
    const place = next?.closest?.(chosen.length ? "svg.drawing" : "svg.drawing, #details");
    if (!isPassing || place || (type === "focusout" && !next)) return;
    if (target.closest?.("svg.drawing, #details")) show(null);
  };
  for (const type of ["pointerout", "focusout"]) document.addEventListener(type, leave);

  // One stop of the Tab key for each picture; arrows go on from there.
  const kSteps = "[data-key^=slot],[data-key^=bus],[data-key^=bridge],g.line";
  const stepsOf = (rack, seen = new Set()) => [...rack.picture.querySelectorAll(kSteps)]
    .filter(({ dataset: { key } }) => !seen.has(key) && seen.add(key));

  const moveTabStop = (rack, group) => {
    rack.picture.querySelector("[tabindex='0']")?.setAttribute("tabindex", "-1");
    group.setAttribute("tabindex", "0");
  };

  for (const rack of racks.values()) {
    rack.picture.setAttribute("role", "group");
    rack.picture.setAttribute("aria-labelledby", `title-${rack.number}`);
    stepsOf(rack).forEach((group, n) => {
      group.setAttribute("tabindex", n === 0 ? "0" : "-1");
      group.setAttribute("role", "button");
      group.setAttribute("aria-label", group.querySelector("title")?.textContent ?? "");
    });
    for (const item of rack.section.querySelectorAll("[data-about]")) {
      for (const key of item.dataset.about.split(" ")) {
        for (const group of rack.groups(key.replace("-", " "))) {
          group.classList.add(item.className);
          group.setAttribute("aria-description", item.className);
        }
      }
    }
  }

  // Slots, buses, bridges and each star trigger are rows below each other.
  const rowsOf = (rack) => {
    const rows = new Map();
    for (const group of stepsOf(rack)) {
      const row = group.dataset.key.split(" ").slice(0, group.matches("g.line") ? 2 : 1).join(" ");
      if (!rows.has(row)) rows.set(row, []);
      rows.get(row).push(group);
    }
    const middle = (group) => {
      const box = group.getBoundingClientRect();
      return box.left + box.width / 2;
    };
    return [...rows.values()].map((row) => row.map((group) => ({ group, x: middle(group) }))
      .sort((a, b) => a.x - b.x));
  };

  const nearest = (row, x) => row.reduce((best, one) =>
    Math.abs(one.x - x) < Math.abs(best.x - x) ? one : best);

  // Where each key leads; to nothing at an end.
  const neighbours = (rack, group) => {
    const rows = rowsOf(rack);
    const y = rows.findIndex((each) => each.some((one) => one.group === group));
    const row = rows[y];
    const x = row.findIndex((one) => one.group === group);
    return {
      ArrowLeft: row[x - 1], ArrowRight: row[x + 1], Home: row[0], End: row[row.length - 1],
      ArrowUp: rows[y - 1] && nearest(rows[y - 1], row[x].x),
      ArrowDown: rows[y + 1] && nearest(rows[y + 1], row[x].x),
    };
  };

  main.addEventListener("keydown", (event) => {
    const target = targetOf(event.target);
    if (!target || event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key === "Enter" || event.key === " ") {
      choose(target);
    } else if (event.key === "Tab" && !event.shiftKey && chosenAt(target) >= 0) {
      show(null);
      close.focus();
    } else {
      const moves = neighbours(target.rack, event.target.closest("[data-key]"));
      if (!(event.key in moves)) return;
      moves[event.key]?.group.focus();
    }
    event.preventDefault();
  });
  // Tab leads from what is chosen into its details, and from there back or on.
  details.addEventListener("keydown", (event) => {
    const stops = details.querySelectorAll("button, a, summary");
    const isAtEnd = event.target === stops[event.shiftKey ? 0 : stops.length - 1];
    if (event.key !== "Tab" || !isAtEnd) return;
    lastChosen()?.focus();
    if (event.shiftKey) event.preventDefault();
  });
  document.addEventListener("keydown", (event) => {
    if (event.key === "Escape") chooseNothing();
    const isPlain = !event.ctrlKey && !event.altKey && !event.metaKey;
    if (event.key !== "/" || event.target === search || !isPlain) return;
    search.focus();
    event.preventDefault();
  });

  // ---- Links that name a chassis or a slot: #1/7 ----

  const goTo = (place) => {
    const [, chassis, slot] = /^(\d+)(?:\/(\d+))?$/.exec(place) ?? [];
    const rack = racks.get(Number(chassis));
    if (place === "modules") fillTable();
    (rack?.section ?? byId(place))?.scrollIntoView({ block: "start" });
    if (!rack || slot === undefined) return;
    chosen.splice(0, 2, { rack, key: `slot ${Number(slot)}` });
    markChosen();
    const group = lastChosen();
    if (!group) return say(`There is no slot ${place}.`);
    moveTabStop(rack, group);
    group.focus({ preventScroll: true });
    group.scrollIntoView({ block: "nearest", inline: "center" });
  };
  const goToHash = () => goTo(location.hash.slice(1).replace(/%2f/i, "/"));
  window.addEventListener("hashchange", goToHash);

  // Also to a place where the address bar is already.
  const follow = (place) => {
    history.pushState(null, "", `#${place}`);
    goTo(place);
  };
  document.addEventListener("click", (event) => {
    const anchor = event.target.closest?.("a[href^='#']");
    if (!anchor || event.ctrlKey || event.metaKey || event.shiftKey) return;
    event.preventDefault();
    follow(anchor.getAttribute("href").slice(1));
  });

  // ---- The table of all modules ----

  const moduleTable = document.querySelector("#modules table");
  let modules = null;
  const moduleData = () => (modules ??= dataOf(byId("module-rows")));
  const compare = new Intl.Collator("en", { numeric: true }).compare;
  const order = { column: 0, direction: 1 };

  // Lists break behind a comma, and names nowhere unless they are long.
  const cellParts = (cell) => cell.split(/(?<=,)/).flatMap((one) =>
    [make("span", { class: /\S{41}/.test(one) ? "long" : /\s/.test(one) ? "" : "whole" }, one), make("wbr")]);
  const moduleRow = ({ place, cells }) => make("tr", {}, ...cells.map((cell, n) => make("td", {},
    ...(n === 0 ? [make("a", { href: `#${place}` }, place)] : cellParts(cell)))));

  const fillTable = () => {
    if (moduleTable.tHead) return;
    const heads = moduleData().titles.map((title, column) => {
      const button = make("button", { type: "button" }, title);
      button.addEventListener("click", () => sortBy(column));
      return make("th", { scope: "col", "aria-sort": column === 0 ? "ascending" : "none" }, button);
    });
    moduleTable.append(make("thead", {}, make("tr", {}, ...heads)), make("tbody"));
    moduleTable.tBodies[0].append(...modules.rows.map(moduleRow));
  };

  function sortBy(column) {
    order.direction = order.column === column ? -order.direction : 1;
    order.column = column;
    // Rows without a text there come last in either direction.
    modules.rows.sort((a, b) => {
      const [left, right] = [a.cells[column], b.cells[column]];
      if (!left || !right) return Number(!left) - Number(!right);
      return order.direction * compare(left, right);
    });
    moduleTable.tBodies[0].replaceChildren(...modules.rows.map(moduleRow));
    moduleTable.querySelectorAll("th").forEach((head, n) => head.setAttribute("aria-sort",
      n !== column ? "none" : order.direction > 0 ? "ascending" : "descending"));
  }

  new IntersectionObserver((entries, observer) => {
    if (!entries.some((entry) => entry.isIntersecting)) return;
    fillTable();
    observer.disconnect();
  }, { rootMargin: "800px" }).observe(byId("modules"));
  window.addEventListener("beforeprint", fillTable);

  // Between tabulators, as spreadsheets take it.
  const tableText = () => {
    const line = (cells) => cells.map((cell) => cell.replace(/\s+/g, " ")).join("\t");
    const { titles, rows } = moduleData();
    return [line(titles), ...rows.map(({ cells }) => line(cells))].join("\n") + "\n";
  };

  const copyByHand = (text) => {
    const area = make("textarea", { class: "away" });
    area.value = text;
    document.body.append(area);
    area.select();
    const isDone = document.execCommand("copy");
    area.remove();
    return isDone;
  };

  byId("copy").addEventListener("click", async () => {
    const text = tableText();
    const isDone = await navigator.clipboard?.writeText(text).then(() => true, () => false);
    const button = byId("copy");
    button.textContent = isDone || copyByHand(text) ? "Copied" : "Can't copy here";
    say(button.textContent);
    setTimeout(() => { button.textContent = "Copy as text"; }, 2000);
  });

  // ---- The saved installation ----

  byId("take").addEventListener("click", () => {
    const text = byId("saved-installation").textContent;
    const saved = JSON.parse(text);
    const name = `${saved.host}-${saved.taken}`.replace(/[^A-Za-z0-9._-]+/g, "-") || "installation";
    const url = URL.createObjectURL(new Blob([text], { type: "application/json" }));
    make("a", { href: url, download: `${name}.json` }).click();
    setTimeout(() => URL.revokeObjectURL(url), 10000);
  });

  // ---- Search ----

  const kMostHits = 20;
  let index = null;
  const searchIndex = () => (index ??= moduleData().rows.map(({ place, cells, find }) => ({
    place, label: cells.slice(0, 5).filter(Boolean).join("  "), text: ` ${find.toLowerCase()}`,
  })));

  // "5.0.0" is no part of "15.0.0"; PCI domain 0000 in front counts for nothing.
  const fits = (text, word) => /^[\da-f:.]*[\da-f][:.][\da-f:.]*$/.test(word)
    ? text.includes(` ${word.replace(/^0000:(?=[\da-f]+:)/, "")}`) : text.includes(word);

  const closeHits = () => {
    hits.hidden = true;
    search.setAttribute("aria-expanded", "false");
    search.removeAttribute("aria-activedescendant");
  };

  const activate = (n) => {
    [...hits.children].forEach((hit, m) => hit.setAttribute("aria-selected", String(n === m)));
    if (hits.children[n]) search.setAttribute("aria-activedescendant", hits.children[n].id);
    hits.children[n]?.scrollIntoView({ block: "nearest" });
  };
  const active = () => [...hits.children].findIndex((hit) => hit.ariaSelected === "true");

  search.addEventListener("input", () => {
    const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    if (words.length === 0) return closeHits();
    const found = searchIndex().filter(({ text }) => words.every((word) => fits(text, word)));
    hits.replaceChildren(...found.slice(0, kMostHits).map(({ place, label }, n) =>
      make("li", { role: "option", id: `hit-${n}`, "data-place": place }, label)));
    const rest = found.length === 0 ? "Nothing fits."
      : found.length > kMostHits && `And ${found.length - kMostHits} more.`;
    if (rest) hits.append(make("li", { class: "none-fits", role: "presentation" }, rest));
    hits.hidden = false;
    search.setAttribute("aria-expanded", "true");
    say(found.length === 1 ? "1 module fits." : `${found.length} modules fit.`);
    activate(0);
  });

  const take = (hit) => {
    if (!hit?.dataset.place) return;
    closeHits();
    follow(hit.dataset.place);
  };

  search.addEventListener("keydown", (event) => {
    const count = hits.querySelectorAll("[data-place]").length;
    if (event.key === "Escape") closeHits();
    if (hits.hidden || count === 0) return;
    if (event.key === "ArrowDown") activate((active() + 1) % count);
    else if (event.key === "ArrowUp") activate((active() + count - 1) % count);
    else if (event.key === "Enter") take(hits.children[active()]);
    else return;
    event.preventDefault();
  });
  search.addEventListener("blur", closeHits);
  hits.addEventListener("pointerdown", (event) => {
    event.preventDefault();
    take(event.target.closest("li"));
  });

  goToHash();
})();
