import type { Found } from "../../bridge/routes";
import { amount } from "../../model/effect";
import { extent, foundText, moment, monthsOf } from "../../model/search";
import { MonthBars } from "../../ui/effect/month_bars";
import { Foreign, Incomplete } from "../../ui/parts";
import { Said } from "../../ui/said";
import { WholeActs } from "./found_acts";

const kinds = { project: "Projet", domain: "Site", app: "Application" };

/** How much it is in all, when it was first and last, and in which months. */
export function FoundHead({ found, onErase }: { found: Found; onErase: () => void }) {
  const { text, first, last, duration: seconds, building } = found;
  return (
    <div class="found-head">
      <Said class="sr-only" text={foundText(found)} />
      <Incomplete text={found.incomplete} />
      {first === null ? (
        <p class="quiet">{foundText(found)}</p>
      ) : (
        <>
          <div class="found-sums">
            <div class="found-all">
              <span>
                <b class="found-total">{amount(seconds)}</b> <span class="quiet">{extent(found)}</span>
              </span>
              <WholeActs {...{ text, onErase }} />
            </div>
            {last !== null && (
              <p>
                <span class="quiet">Dernière fois :</span> <b>{moment(last)}</b>
              </p>
            )}
            {!building && (
              <p>
                <span class="quiet">Première fois :</span> {moment(first)}
              </p>
            )}
            {found.subjects.length > 0 && (
              <p class="found-subjects">
                {found.subjects.map(({ kind, name, duration: part }) => (
                  <span key={`${kind} ${name}`} class="chip still">
                    <span class="quiet">{kinds[kind]}</span>
                    <Foreign text={name} length={40} />
                    <b>{amount(part)}</b>
                  </span>
                ))}
              </p>
            )}
          </div>
          <MonthBars known={monthsOf(found)} caption="Temps trouvé, par mois" cat="cat-travail" />
        </>
      )}
      {building && (
        <p class="quiet" role="status">
          Les années les plus anciennes sont encore en préparation ; elles viennent d’elles-mêmes.
        </p>
      )}
    </div>
  );
}
