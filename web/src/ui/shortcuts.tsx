import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { load, save } from "../model/stored";
import { Dialog } from "./dialog";

interface Group {
  title: string;
  keys: [string, string][];
}

const groups: Group[] = [
  {
    title: "Vues",
    keys: [
      ["J", "Jour"],
      ["S", "Semaine"],
      ["B", "Bilan"],
      ["P", "Projets"],
      ["R", "Règles"],
      ["G", "Réglages"],
    ],
  },
  {
    title: "Dates",
    keys: [
      ["← →", "Jour ou semaine d’avant, d’après"],
      ["A", "Aujourd’hui"],
      ["C", "Calendrier"],
    ],
  },
  {
    title: "Partout",
    keys: [
      ["/", "Rechercher"],
      ["N", "Nouveau projet, nouvelle règle"],
      ["Maj + P", "Mettre en pause, reprendre"],
      ["Ctrl + Z", "Annuler ; avec Maj, rétablir"],
      ["?", "Cette aide"],
    ],
  },
  {
    title: "Blocs du jour",
    keys: [
      ["↑ ↓", "Aller d’un bloc à l’autre"],
      ["Maj + ↑ ↓", "Étendre la sélection"],
      ["Espace", "Ajouter ou retirer le bloc"],
      ["Ctrl + A", "Tout sélectionner"],
      ["1 2 3", "Assigner à Travail, Loisir, Autre"],
      ["0", "Rendre automatique"],
      ["Entrée", "Choisir catégorie et projet"],
      ["Suppr", "Supprimer pour de bon"],
      ["Échap", "Ne rien sélectionner"],
    ],
  },
  {
    title: "Chronologie",
    keys: [
      ["← →", "Passage précédent, suivant"],
      ["Maj + ← →", "Étendre une plage"],
      ["+ −", "Agrandir, réduire"],
      ["Z", "Voir toute l’activité"],
      ["Ctrl + molette", "Agrandir autour du pointeur"],
    ],
  },
];

const setting = "singleKeys";

export function singleKeysOn(): boolean {
  return load(setting, true, (value) => typeof value === "boolean");
}

export function ShortcutHelp({ onClose }: { onClose: () => void }) {
  const [on, setOn] = useState(singleKeysOn);
  return (
    <Dialog title="Raccourcis clavier" onClose={onClose} wide>
      <div class="dialog-body shortcut-groups">
        {groups.map((group) => (
          <section key={group.title}>
            <h3>{group.title}</h3>
            <dl>
              {group.keys.map(([keys, meaning]) => (
                <div key={keys}>
                  <dt>
                    <kbd>{keys}</kbd>
                  </dt>
                  <dd>{meaning}</dd>
                </div>
              ))}
            </dl>
          </section>
        ))}
      </div>
      <footer class="dialog-foot start">
        <label class="check">
          <input
            type="checkbox"
            checked={on}
            onChange={(event) => {
              setOn(event.currentTarget.checked);
              save(setting, event.currentTarget.checked);
            }}
          />
          Raccourcis à une seule touche
        </label>
      </footer>
    </Dialog>
  );
}

// What a key may be called in a table of shortcuts: what it writes, and then the digit that is printed on
// it, because AZERTY keyboards write digits with Shift only.
function keyNames(event: KeyboardEvent): string[] {
  const { key, code, shiftKey } = event;
  const names = [
    shiftKey && /^[a-z]$/i.test(key)
      ? `Shift+${key.toUpperCase()}`
      : key.length === 1
        ? key.toLowerCase()
        : key,
  ];
  const digit = /^Digit(\d)$/.exec(code)?.[1];
  if (digit && !shiftKey) names.push(digit);
  return names;
}

function takesKeys(target: EventTarget | null, key: string): boolean {
  if (!(target instanceof HTMLElement)) return false;
  if (target.closest("dialog, [role=dialog]")) return true;
  if (target instanceof HTMLInputElement && /^(checkbox|radio)$/.test(target.type))
    return key.startsWith("Arrow");
  if (target.matches("input, textarea, select")) return true;
  return key.startsWith("Arrow") && target.closest("[data-arrows]") !== null;
}

/**
 * Keys that work wherever the focus is, except in a field or a dialogue. A handler that returns
 * false lets the key through.
 */
export function useShortcuts(handlers: Record<string, () => boolean | void>): void {
  const latest = useRef(handlers);
  latest.current = handlers;
  useLayoutEffect(() => {
    const onKey = (event: KeyboardEvent) => {
      if (event.defaultPrevented || event.ctrlKey || event.metaKey || event.altKey) return;
      const name = keyNames(event).find((candidate) => candidate in latest.current);
      const handler = name && latest.current[name];
      if (!handler || takesKeys(event.target, name)) return;
      if (name !== "?" && name !== "Escape" && !name.startsWith("Arrow") && !singleKeysOn()) return;
      if (handler() !== false) event.preventDefault();
    };
    window.addEventListener("keydown", onKey);
    return () => window.removeEventListener("keydown", onKey);
  }, []);
}
