import { useState } from "preact/hooks";
import { Dialog } from "../ui/dialog";
import { setSingleKeys, singleKeysOn } from "../ui/shortcuts";
import { views } from "./registry";

interface Group {
  title: string;
  keys: [string, string][];
}

const groups: Group[] = [
  {
    title: "Vues",
    keys: views.map(({ key, title }) => [key.toUpperCase(), title]),
  },
  {
    title: "Dates",
    keys: [
      ["← →", "Jour, semaine, période d’avant, d’après"],
      ["A", "Aujourd’hui"],
      ["C", "Calendrier ; mois avec Page préc. ou suiv., année avec Maj"],
    ],
  },
  {
    title: "Partout",
    keys: [
      ["Tab", "D’un groupe au suivant"],
      ["← ↑ → ↓", "D’un élément du groupe à l’autre"],
      ["Début, Fin", "Premier, dernier du groupe"],
      ["F6", "Partie suivante ; avec Maj, précédente"],
      ["Ctrl + K", "Retrouver, dans toutes les années"],
      ["/", "Rechercher"],
      ["N", "Nouveau projet, nouvelle règle, nouveau moment"],
      ["Maj + P", "Mettre en pause, reprendre"],
      ["Ctrl + Z", "Annuler ; avec Maj, rétablir"],
      ["Ctrl + + −", "Agrandir, réduire la page"],
      ["Ctrl + 0", "Taille normale de la page"],
      ["?", "Cette aide"],
      ["F1", "Guide"],
    ],
  },
  {
    title: "Blocs du jour",
    keys: [
      ["↑ ↓", "Aller d’un bloc à l’autre"],
      ["Maj + ↑ ↓", "Étendre la sélection"],
      ["Espace", "Ajouter ou retirer le bloc"],
      ["Ctrl + A", "Tout sélectionner"],
      ["1 2 3", "Attribuer à Travail, Loisir, Autre"],
      ["0", "Rendre automatique"],
      ["Entrée", "Choisir catégorie et projet"],
      ["Suppr", "Supprimer pour de bon"],
      ["Échap", "Tout désélectionner"],
    ],
  },
  {
    title: "Trous de la semaine",
    keys: [
      ["T", "Aller aux trous à remplir"],
      ["↑ ↓", "Trou précédent, suivant"],
      ["1 2 3", "Donner au projet proposé"],
      ["Entrée", "Autre projet, note"],
      ["I", "Ignorer"],
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
              setSingleKeys(event.currentTarget.checked);
            }}
          />
          Raccourcis à une seule touche
        </label>
      </footer>
    </Dialog>
  );
}
